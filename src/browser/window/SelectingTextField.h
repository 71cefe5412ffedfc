#pragma once

#include <QLineEdit>

namespace morvane {

/// A line of text that selects all of it when it takes the focus, so that what is typed next takes its place.
class SelectingTextField : public QLineEdit {
    Q_OBJECT
public:
    using QLineEdit::QLineEdit;

protected:
    void focusInEvent(QFocusEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    bool m_isEntered = false; ///< By a press of the mouse that has not ended yet.
};

} // namespace morvane
