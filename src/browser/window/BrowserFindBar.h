#pragma once

#include "browser/window/PageFinder.h"

#include <QWidget>

class QLabel;
class QLineEdit;

namespace morvane {

class BrowserManager;

/// The line in which the user looks for words in the page of the active tab: Return goes to the next match,
/// Shift+Return to the one before, Escape closes it.
class BrowserFindBar : public QWidget {
    Q_OBJECT
public:
    /// All of them outlive the bar.
    BrowserFindBar(BrowserManager &manager, Scheduler &scheduler, Announcer &announcer,
                   QWidget *parent = nullptr);

    /// Opens it, goes back to it, or closes it where the user is in it.
    void toggle();

Q_SIGNALS:
    /// It is about to be closed, and the keyboard is in it.
    void focusLeft();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void followPage();
    void open();
    void close();
    void count();
    void step(PageFinder::Direction direction);
    QPointer<WebPage> page() const;

    BrowserManager &m_manager;
    Announcer &m_announcer;
    QPointer<WebPage> m_followed; ///< Is counted anew when another document has come.
    PageFinder *m_finder;
    QLineEdit *m_query;
    QLabel *m_count;
};

} // namespace morvane
