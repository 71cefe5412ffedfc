#pragma once

#include "async/Task.h"

#include <QPointer>
#include <QString>
#include <optional>

namespace morvane {

class Announcer;
class BrowserManager;
class BrowserTab;

/// What the agent does in the browser; each operation gives the text for the model. They never throw but for
/// cancellation, and each keeps to the tab that was active when it began. Main thread.
class PageOperations {
public:
    /// Both outlive the operations.
    PageOperations(BrowserManager &browser, Announcer &announcer) : m_browser(browser), m_announcer(announcer)
    {
    }

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
    /// Whether there is a window to be seen.
    bool showWindow();
    std::optional<QString> elementRef(qint64 index) const;
    static Task<QString> readTab(QPointer<BrowserTab> tab);

    BrowserManager &m_browser;
    Announcer &m_announcer;
};

} // namespace morvane
