#include "platform/linux/LinuxUrlOpener.h"

#include <QDesktopServices>

namespace morvane {

bool LinuxUrlOpener::open(const QUrl &url)
{
    const bool isPage = url.scheme() == QStringLiteral("https") || url.scheme() == QStringLiteral("http");
    return isPage && url.isValid() && QDesktopServices::openUrl(url);
}

} // namespace morvane
