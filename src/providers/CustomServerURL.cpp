#include "providers/CustomServerURL.h"

#include "base/Text.h"

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// The base without what does not belong to it, and without `surplus` at its end; then `path`.
std::optional<QUrl> addressBelow(const QString &baseURL, QStringView surplus, QStringView path)
{
    QString text = trimmed(baseURL);
    if (!text.startsWith("http://"_L1, Qt::CaseInsensitive) &&
        !text.startsWith("https://"_L1, Qt::CaseInsensitive))
        return std::nullopt;
    while (text.endsWith(u'/'))
        text.chop(1);
    if (!surplus.isEmpty() && text.endsWith(surplus, Qt::CaseInsensitive))
        text.chop(surplus.size());
    if (!text.endsWith(path, Qt::CaseInsensitive))
        text += path;
    QUrl url(text, QUrl::StrictMode);
    if (!url.isValid() || url.host().isEmpty())
        return std::nullopt;
    return url;
}

} // namespace

std::optional<QUrl> chatCompletionsURL(const QString &baseURL)
{
    return addressBelow(baseURL, {}, u"/chat/completions");
}

std::optional<QUrl> modelsListURL(const QString &baseURL)
{
    return addressBelow(baseURL, u"/chat/completions", u"/models");
}

} // namespace morvane
