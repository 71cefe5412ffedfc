#pragma once

#include <QDialog>

namespace morvane {

/// The window in which the user reads a long text of the draft. Deletes itself when it closes.
class PastedTextView : public QDialog {
    Q_OBJECT
public:
    /// Shows the beginning of a text that is too long to be read.
    PastedTextView(const QString &text, QWidget *parent);
};

} // namespace morvane
