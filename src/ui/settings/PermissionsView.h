#pragma once

#include <QScrollArea>

namespace morvane {

class PermissionsModel;

/// The one place where the user grants what the tools need, so that the assistant is not stopped in the
/// middle of its work. Looks at the states whenever it comes into view and the program to the front.
class PermissionsView : public QScrollArea {
    Q_OBJECT
public:
    /// `model` must outlive the view.
    explicit PermissionsView(PermissionsModel &model, QWidget *parent = nullptr);

protected:
    void showEvent(QShowEvent *event) override;

private:
    PermissionsModel &m_model;
};

} // namespace morvane
