#pragma once

#include <QLabel>

namespace morvane {

class AppModel;

/// The line at the bottom of the main window: a dot while Morvane works, a check mark otherwise, and the
/// status.
class StatusBarView : public QLabel {
    Q_OBJECT
public:
    explicit StatusBarView(AppModel &model, QWidget *parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void updateText();

    AppModel &m_model;
};

} // namespace morvane
