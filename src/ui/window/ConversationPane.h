#pragma once

#include <QWidget>

class QPushButton;

namespace morvane {

class Announcer;
class ChatScrollView;
class FindBar;
class FindSession;
class Scheduler;
class Transcript;
struct FoundText;

/// The conversation with what belongs to reading it: the line in which words are looked for, and the button
/// that leads back to the newest text.
class ConversationPane : public QWidget {
    Q_OBJECT
public:
    /// Takes the view into it; all others must outlive the pane.
    ConversationPane(ChatScrollView *view, const Transcript &transcript, Scheduler &scheduler,
                     Announcer &announcer, QWidget *parent = nullptr);

    ChatScrollView &view() const { return *m_view; }
    /// Whether the line is open in which words are looked for.
    bool isFinding() const;

public Q_SLOTS:
    /// Opens the line, or goes back to it.
    void find();
    /// The next and the previous place; opens the line where nothing is looked for yet.
    void findNext();
    void findPrevious();
    void jumpToLatest();

Q_SIGNALS:
    /// The user has done with looking for words.
    void findClosed();

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void closeFind();
    void search();
    void showMatch(const FoundText &found);
    void placeButton();

    ChatScrollView *m_view;
    const Transcript &m_transcript;
    Announcer &m_announcer;
    FindSession *m_session;
    FindBar *m_bar;
    QPushButton *m_latest;
};

} // namespace morvane
