#include "browser/pages/BrowserTarget.h"

#include "base/Text.h"
#include "browser/pages/SiteOf.h"

#include <optional>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

std::optional<BrowserTarget> withHost(const QString &spelling)
{
    const QUrl url(spelling, QUrl::StrictMode);
    if (!url.isValid() || url.host().isEmpty())
        return std::nullopt;
    return BrowserTarget{spelling, url};
}

bool isHostLike(const QString &entry, const QString &lower)
{
    return (entry.contains(u'.') && !entry.contains(u' ')) || lower.startsWith("localhost:"_L1) ||
           lower == "localhost"_L1;
}

BrowserTarget searchFor(const QString &entry)
{
    const QString address =
        u"https://www.google.com/search?q="_s + QString::fromLatin1(QUrl::toPercentEncoding(entry));
    return {address, QUrl(address, QUrl::StrictMode)};
}

} // namespace

QString BrowserTarget::host() const
{
    const QString host = siteOf(url);
    const qsizetype place = spelling.indexOf(host, 0, Qt::CaseInsensitive);
    return place < 0 ? host : spelling.mid(place, host.size());
}

BrowserTarget resolveTarget(const QString &text)
{
    const QString entry = trimmed(text);
    const QString lower = entry.toLower();
    std::optional<BrowserTarget> target;
    if (lower.startsWith("http://"_L1) || lower.startsWith("https://"_L1))
        target = withHost(entry);
    if (!target && isHostLike(entry, lower))
        target = withHost(u"https://"_s + entry);
    return target ? *target : searchFor(entry);
}

} // namespace morvane
