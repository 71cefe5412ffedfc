#pragma once

#include <QDialog>
#include <QString>

class QCheckBox;
class QLineEdit;
class QVBoxLayout;

namespace morvane {

/// What a page, or the server of one, says or asks, over the window that shows it. Its title names who
/// speaks; what it says is plain text in which everything can be seen.
class PageDialogSheet final : public QDialog {
    Q_OBJECT
public:
    enum class Refusal { none, cancel };

    /// `speaker` is the site's host, or empty.
    PageDialogSheet(QWidget *window, const QString &speaker, const QString &text, Refusal refusal);

    /// Adds a line to be filled in.
    QLineEdit *addField(const QString &name, const QString &text);
    /// Who speaks, and how that begins.
    QString inOneLine() const;
    /// Offers to hear no more of the page.
    QCheckBox *addSilence();

private:
    void append(QWidget *control);

    QVBoxLayout *m_column;
    QWidget *m_lastControl = nullptr; ///< Above the buttons.
};

} // namespace morvane
