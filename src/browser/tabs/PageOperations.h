#pragma once

#include "async/Task.h"

#include <QPointer>
#include <QString>
#include <expected>

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
    struct Element {
        QPointer<BrowserTab> tab;
        QString ref;
    };

    /// Whether there is a window to be seen.
    bool showWindow();
    /// What a number of the last reading stands for, once the window is there; or why it cannot be used.
    std::expected<Element, QString> element(qint64 index);
    static Task<QString> readTab(QPointer<BrowserTab> tab);

    BrowserManager &m_browser;
    Announcer &m_announcer;
};

} // namespace morvane
