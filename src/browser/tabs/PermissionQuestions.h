#pragma once

#include "browser/pages/PagePermission.h"
#include "browser/tabs/RefusedSites.h"

#include <QList>
#include <QObject>
#include <functional>
#include <memory>

namespace morvane {

class Announcer;
class BrowserWindow;

/// What pages want of the computer, from the question to the user's answer. One is asked about at a time, and
/// whoever wants the same as another gets that one's answer. Main thread.
class PermissionQuestions : public QObject {
    Q_OBJECT
public:
    using Permission = std::shared_ptr<PagePermission>;

    /// `window` gives the window that asks, or null.
    PermissionQuestions(Announcer &announcer, std::function<BrowserWindow *()> window);

    /// Takes what a page wants. Too many at once, and sites that go on asking, are refused without a
    /// question.
    void add(const Permission &permission);
    /// The window has gone, and its question with it.
    void windowClosed();
    /// Sites that were refused may ask again.
    void forgetRefusals() { m_refused.forget(); }

private:
    void askForNext();
    void answer(const Permission &permission, bool isGranted);
    void refused(const QString &site);
    void withdraw(const PagePermission *permission);

    Announcer &m_announcer;
    std::function<BrowserWindow *()> m_window;
    RefusedSites m_refused;
    QList<Permission> m_waiting; ///< The first is the one that is asked about.
};

} // namespace morvane
