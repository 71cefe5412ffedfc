#include "platform/linux/LinuxUrlOpener.h"

#include <QDesktopServices>

using namespace Qt::StringLiterals;

namespace morvane {

bool LinuxUrlOpener::open(const QUrl &url)
{
    const bool isPage = url.scheme() == u"https"_s || url.scheme() == u"http"_s;
    return isPage && url.isValid() && QDesktopServices::openUrl(url);
}

} // namespace morvane
