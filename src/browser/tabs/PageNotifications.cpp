#include "browser/tabs/PageNotifications.h"

#include "browser/pages/PageNotification.h"
#include "browser/pages/PageText.h"
#include "platform/NotificationCenter.h"

using namespace Qt::StringLiterals;

namespace morvane {

void PageNotifications::show(const PageNotification &notification)
{
    m_center.add(
        {.identifier = u"site "_s + notification.site,
         .title = pageName(notification.site, u"This page"_s) + u": "_s + pageText(notification.title),
         .body = pageText(notification.message),
         .sound = {},
         .delay = {}});
}

} // namespace morvane
