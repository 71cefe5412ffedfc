#pragma once

#include "browser/pages/PagePermission.h"
#include "browser/window/BrowserWindowServices.h"

#include <QString>
#include <QUrl>
#include <functional>

class QWidget;

namespace morvane {

// What is asked over the browser's window. Nothing waits for the answer; a question goes with its window.
// What comes while the user is in another window leaves the keyboard there and is spoken.

/// Where a file of `site` is to be written, with folders to be made on the way. `answer` is called once, with
/// a whole path or the empty text.
void askWhereToSave(QWidget &window, const BrowserWindowServices &services, const QString &suggestedFileName,
                    const QString &site, std::function<void(const QString &path)> answer);

/// Whether a page may have what it asks for. No is what a dismissed question means. `answer` is called once,
/// unless the wish is withdrawn before.
void askForPagePermission(QWidget &window, const BrowserWindowServices &services,
                          const PagePermission &permission, std::function<void(bool isGranted)> answer);

/// Ways to hand on an address: to the clipboard, another browser, or by mail.
void showShareMenu(QWidget &window, const BrowserWindowServices &services, const QUrl &address);

} // namespace morvane
