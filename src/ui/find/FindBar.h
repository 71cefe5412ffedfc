#pragma once

#include <QWidget>

class QLabel;
class QLineEdit;
class QToolButton;

namespace morvane {

class FindSession;

/// The line above the conversation in which the user looks for words: Return goes to the next place,
/// Shift+Return to the one before, Escape ends it.
class FindBar : public QWidget {
    Q_OBJECT
public:
    /// `session` must outlive the bar.
    explicit FindBar(FindSession &session, QWidget *parent = nullptr);

    QString words() const;
    /// Shows the bar with its words selected and takes the focus.
    void open();

Q_SIGNALS:
    /// Other words are wanted.
    void wordsChanged(const QString &words);
    /// The user has done with it.
    void closed();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    QToolButton *addButton(const QIcon &icon, const QString &label);
    void update();

    FindSession &m_session;
    QLineEdit *m_words;
    QLabel *m_summary;
    QToolButton *m_previous;
    QToolButton *m_next;
};

} // namespace morvane
