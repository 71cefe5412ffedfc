#include "platform/linux/notifications/BannerText.h"

#include "base/Text.h"

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr qsizetype bodyLength = 1000;
constexpr qsizetype titleLength = 100;

/// What does not pass a D-Bus text or confuses its reader.
QString withoutControls(QString text)
{
    text.replace(u"\r\n"_s, u"\n"_s);
    for (QChar &character : text) {
        const bool isControl = character.unicode() < 0x20 || character.unicode() == 0x7f;
        if (isControl && character != u'\n')
            character = u' ';
    }
    return text;
}

QString shortened(const QString &text, qsizetype limit)
{
    const QString beginning = firstCharacters(text, limit);
    return beginning.size() < text.size() ? beginning + u'…' : text;
}

} // namespace

QString bannerBody(const QString &text, BodyMarkup markup)
{
    QString body = withoutControls(shortened(text, bodyLength));
    if (markup == BodyMarkup::shown)
        return body;
    // Not toHtmlEscaped(), which also makes quotes an entity that small daemons do not know.
    return body.replace(u'&', "&amp;"_L1).replace(u'<', "&lt;"_L1).replace(u'>', "&gt;"_L1);
}

QString bannerTitle(const QString &text)
{
    return withoutControls(flattened(text, titleLength));
}

} // namespace morvane
