#include "app/TitleGenerator.h"

#include "base/Text.h"

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr qsizetype quotedLength = 600;
constexpr qsizetype titleLength = 60;

bool isDirection(QChar unit)
{
    return unit == u'\u061c' || unit == u'\u200e' || unit == u'\u200f' ||
           (unit >= u'\u202a' && unit <= u'\u202e') || (unit >= u'\u2066' && unit <= u'\u2069');
}

/// Without what a terminal, a window's list or a screen reader would act upon. Line ends stay.
QString withoutControls(QStringView text)
{
    QString kept;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar unit = text[i];
        const bool isEscape = unit == u'\x1b' && i + 1 < text.size() && text[i + 1] == u'[';
        if (isEscape) {
            i += 2;
            while (i < text.size() && (text[i] < u'@' || text[i] > u'~'))
                ++i;
        } else if (unit == u'\t') {
            kept += u' ';
        } else if (unit.isSpace() || !(isDirection(unit) || unit.category() == QChar::Other_Control)) {
            kept += unit;
        }
    }
    return kept;
}

QString cleanedTitle(const QString &reply)
{
    // Sixty characters and what may stand around them lie well within this.
    constexpr qsizetype longestReply = 16'384;
    const QStringView body = QStringView(reply).trimmed();
    QString title = trimmed(withoutControls(body.first(qMin(body.size(), longestReply))));
    title.remove(u'"');
    return firstCharacters(singleLine(title), titleLength);
}

} // namespace

Task<QString> TitleGenerator::generate(QString firstMessage, QString reply, AIConfiguration config)
{
    config.systemPrompt = u"Generate a very short title (3 to 6 words) that summarizes the "
                          "conversation. Reply with only the title "
                          "text. No quotes, no ending period."_s;
    config.temperature = 0.3;
    config.maxTokens = 60;
    config.tools.clear();
    const QString request = u"First message: "_s + firstCharacters(firstMessage, quotedLength) +
                            u"\nReply: "_s + firstCharacters(reply, quotedLength) + u"\nTitle:"_s;
    QString title;
    try {
        const AITurnResult turn =
            co_await m_turns.runTurn({{APIMessage::User{request, {}}}}, config, [](const QString &) {});
        title = cleanedTitle(turn.text);
    } catch (...) {
        // The provisional title stays; a missing title is nothing to trouble the user with.
    }
    // Keeps a provider's error text from becoming a title.
    if (title.toLower().contains("error"_L1))
        co_return QString();
    co_return title;
}

} // namespace morvane
