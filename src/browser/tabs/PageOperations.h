#pragma once

#include "async/Task.h"

#include <QPointer>
#include <QString>
#include <expected>

namespace morvane {

class Announcer;
class BrowserManager;
class BrowserTab;
struct BrowserTarget;

/// What the agent does in the browser, and where the user goes in it; each operation of the agent's gives the
/// text for the model. They never throw but for cancellation, and each keeps to the tab that was active when
/// it began. Main thread.
class PageOperations {
public:
    /// Both outlive the operations.
    PageOperations(BrowserManager &browser, Announcer &announcer) : m_browser(browser), m_announcer(announcer)
    {
    }

    /// For the user: opens an address, or a search for the text. The page is not read, or the numbers that
    /// the agent knows of another one would stand for elements of this.
    void open(const QString &text);

    /// Opens an address, or a search for the text, waits until the page has settled, and reads it.
    Task<QString> browserOpen(QString urlString);
    Task<QString> browserRead();
    /// Presses the element with this number of the tab's last reading.
    Task<QString> browserClick(qint64 index);
    Task<QString> browserType(qint64 index, QString text, bool submit);
    /// In units of 600 pixels, downwards when negative.
    Task<QString> browserScroll(qint64 amount);
    Task<QString> browserBack();

private:
    struct Element {
        QPointer<BrowserTab> tab;
        QString ref;
    };

    /// Begins a load in the active tab. Null where there is no window.
    QPointer<BrowserTab> load(const BrowserTarget &target);
    /// Whether there is a window to be seen.
    bool showWindow();
    /// What a number of the last reading stands for, once the window is there; or why it cannot be used.
    std::expected<Element, QString> element(qint64 index);
    static Task<QString> readTab(QPointer<BrowserTab> tab);

    BrowserManager &m_browser;
    Announcer &m_announcer;
};

} // namespace morvane
