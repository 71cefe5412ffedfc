#include "providers/ModelsListURL.h"

#include "base/Text.h"

using namespace Qt::StringLiterals;

namespace morvane {

std::optional<QUrl> modelsListURL(const QString &baseURL)
{
    QString text = trimmed(baseURL);
    if (!text.startsWith(u"http://"_s, Qt::CaseInsensitive) &&
        !text.startsWith(u"https://"_s, Qt::CaseInsensitive))
        return std::nullopt;
    while (text.endsWith(u'/'))
        text.chop(1);
    const auto chatPath = u"/chat/completions"_s;
    if (text.endsWith(chatPath, Qt::CaseInsensitive))
        text.chop(chatPath.size());
    const auto listPath = u"/models"_s;
    if (!text.endsWith(listPath, Qt::CaseInsensitive))
        text += listPath;
    QUrl url(text, QUrl::StrictMode);
    if (!url.isValid() || url.host().isEmpty())
        return std::nullopt;
    return url;
}

} // namespace morvane
