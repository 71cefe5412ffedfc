#include "providers/ChatCompletionsURL.h"

#include "base/Text.h"

namespace morvane {

std::optional<QUrl> chatCompletionsURL(const QString &baseURL)
{
    QString text = trimmed(baseURL);
    if (!text.startsWith(QStringLiteral("http://"), Qt::CaseInsensitive) &&
        !text.startsWith(QStringLiteral("https://"), Qt::CaseInsensitive))
        return std::nullopt;
    while (text.endsWith(QLatin1Char('/')))
        text.chop(1);
    if (!text.endsWith(QStringLiteral("/chat/completions"), Qt::CaseInsensitive))
        text += QStringLiteral("/chat/completions");
    QUrl url(text, QUrl::StrictMode);
    if (!url.isValid() || url.host().isEmpty())
        return std::nullopt;
    return url;
}

} // namespace morvane
