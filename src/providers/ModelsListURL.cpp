#include "providers/ModelsListURL.h"

#include "base/Text.h"

namespace morvane {

std::optional<QUrl> modelsListURL(const QString &baseURL)
{
    QString text = trimmed(baseURL);
    if (!text.startsWith(QStringLiteral("http://"), Qt::CaseInsensitive) &&
        !text.startsWith(QStringLiteral("https://"), Qt::CaseInsensitive))
        return std::nullopt;
    while (text.endsWith(QLatin1Char('/')))
        text.chop(1);
    const auto chatPath = QStringLiteral("/chat/completions");
    if (text.endsWith(chatPath, Qt::CaseInsensitive))
        text.chop(chatPath.size());
    const auto listPath = QStringLiteral("/models");
    if (!text.endsWith(listPath, Qt::CaseInsensitive))
        text += listPath;
    QUrl url(text, QUrl::StrictMode);
    if (!url.isValid() || url.host().isEmpty())
        return std::nullopt;
    return url;
}

} // namespace morvane
