#include "app/TitleGenerator.h"

#include "base/Text.h"

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr qsizetype quotedLength = 600;
constexpr qsizetype titleLength = 60;

QString cleanedTitle(const QString &reply)
{
    QString title = trimmed(reply);
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
