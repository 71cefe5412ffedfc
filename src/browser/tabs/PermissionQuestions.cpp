#include "browser/tabs/PermissionQuestions.h"

#include "browser/tabs/BrowserWindow.h"
#include "platform/Announcer.h"

#include <QPointer>
#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// A page can ask without end.
constexpr qsizetype mostWishes = 5;

bool isSame(const PagePermission &one, const PagePermission &other)
{
    return one.kind() == other.kind() && one.site() == other.site();
}

} // namespace

PermissionQuestions::PermissionQuestions(Announcer &announcer, std::function<BrowserWindow *()> window)
    : m_announcer(announcer), m_window(std::move(window))
{
}

void PermissionQuestions::add(const Permission &permission)
{
    if (m_waiting.size() >= mostWishes || m_refused.goesOnAsking(permission->site())) {
        permission->refuse();
        return;
    }
    connect(permission.get(), &PagePermission::withdrawn, this,
            [this, key = permission.get()] { withdraw(key); });
    m_waiting.append(permission);
    if (m_waiting.size() == 1)
        askForNext();
}

void PermissionQuestions::windowClosed()
{
    for (const Permission &permission : std::exchange(m_waiting, {}))
        permission->refuse();
}

void PermissionQuestions::askForNext()
{
    if (m_waiting.isEmpty())
        return;
    BrowserWindow *const window = m_window();
    if (!window) {
        windowClosed();
        return;
    }
    const Permission permission = m_waiting.first();
    window->askForPermission(permission, [self = QPointer(this), permission](bool isGranted) {
        if (self)
            self->answer(permission, isGranted);
    });
}

void PermissionQuestions::answer(const Permission &permission, bool isGranted)
{
    if (m_waiting.isEmpty() || m_waiting.first() != permission)
        return;
    if (isGranted)
        m_refused.agreed(permission->site());
    else
        refused(permission->site());
    QList<Permission> same;
    QList<Permission> tooMany;
    QList<Permission> others;
    for (const Permission &waiting : std::exchange(m_waiting, {}))
        if (isSame(*waiting, *permission))
            same.append(waiting);
        else if (m_refused.goesOnAsking(waiting->site()))
            tooMany.append(waiting);
        else
            others.append(waiting);
    m_waiting = others;
    askForNext();
    // A page that has its answer may want something else at once.
    for (const Permission &answered : same)
        isGranted ? answered->grant() : answered->refuse();
    for (const Permission &unasked : tooMany)
        unasked->refuse();
}

void PermissionQuestions::refused(const QString &site)
{
    m_refused.refused(site);
    if (m_refused.goesOnAsking(site))
        m_announcer.announce(
            u"Wishes of %1 are refused until an address is opened."_s.arg(m_refused.refusedWith(site)));
}

void PermissionQuestions::withdraw(const PagePermission *permission)
{
    const auto place = std::ranges::find(m_waiting, permission, &Permission::get);
    if (place == m_waiting.end())
        return;
    const bool wasAsked = place == m_waiting.begin();
    m_waiting.erase(place);
    if (wasAsked)
        askForNext();
}

} // namespace morvane
