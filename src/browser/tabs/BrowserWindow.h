#pragma once

#include "browser/pages/PagePermission.h"

#include <QString>
#include <QUrl>
#include <functional>
#include <memory>

namespace morvane {

/// What the browser's manager asks of its window. The window follows the manager by its signals, and says
/// `BrowserManager::windowClosed` when the user has closed it. Main thread.
class BrowserWindow {
public:
    virtual ~BrowserWindow() = default;

    virtual bool isVisible() const = 0;
    /// Shows the window in front of the others; the keyboard stays where it is.
    virtual void orderFront() = 0;
    /// Shows the window and gives it the keyboard.
    virtual void activate() = 0;

    /// Asks where a file of `site` is to be written, and calls `answer` once, later: with a whole path, or
    /// the empty text when the user wants none. Without a call when the window goes.
    virtual void askForDestination(const QString &suggestedFileName, const QString &site,
                                   std::function<void(const QString &path)> answer) = 0;
    /// Asks whether a page may have what it wants, and calls `answer` once, later. Without a call when the
    /// wish is withdrawn or the window goes.
    virtual void askForPermission(const std::shared_ptr<PagePermission> &permission,
                                  std::function<void(bool isGranted)> answer) = 0;
    /// Offers ways to hand on the address.
    virtual void showSharePicker(const QUrl &address) = 0;
};

} // namespace morvane
