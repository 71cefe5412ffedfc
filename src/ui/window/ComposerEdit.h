#pragma once

#include <QPlainTextEdit>

namespace morvane {

/// The field in which the user writes: grows with its text up to eight lines, Return sends, Shift+Return
/// begins a new line, Tab leaves the field.
class ComposerEdit : public QPlainTextEdit {
    Q_OBJECT
public:
    explicit ComposerEdit(QWidget *parent = nullptr);

Q_SIGNALS:
    void sendRequested();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void fitHeight();
};

} // namespace morvane
