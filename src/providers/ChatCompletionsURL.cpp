#include "providers/ChatCompletionsURL.h"

#include "base/Text.h"

using namespace Qt::StringLiterals;

namespace morvane {

std::optional<QUrl> chatCompletionsURL(const QString &baseURL)
{
    QString text = trimmed(baseURL);
    if (!text.startsWith(u"http://"_s, Qt::CaseInsensitive) &&
        !text.startsWith(u"https://"_s, Qt::CaseInsensitive))
        return std::nullopt;
    while (text.endsWith(u'/'))
        text.chop(1);
    if (!text.endsWith(u"/chat/completions"_s, Qt::CaseInsensitive))
        text += u"/chat/completions"_s;
    QUrl url(text, QUrl::StrictMode);
    if (!url.isValid() || url.host().isEmpty())
        return std::nullopt;
    return url;
}

} // namespace morvane
