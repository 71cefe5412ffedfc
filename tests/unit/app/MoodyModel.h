#pragma once

#include "Dice.h"

#include "async/Sleep.h"
#include "base/Json.h"
#include "providers/AIService.h"
#include "providers/AIServiceError.h"

#include <QRegularExpression>

namespace morvane {

/// The number of the message that a text belongs to: every text of the test holds one, as in "<17>".
inline int numberIn(const QString &text)
{
    static const QRegularExpression number(QStringLiteral("<(\\d+)>"));
    return number.match(text).captured(1).toInt();
}

/// A model that does anything at any pace. Whatever it says holds the number of the message that it answers.
class MoodyModel final : public AIService {
public:
    explicit MoodyModel(unsigned seed) : m_dice(seed) {}

    Task<AITurnResult> runOpenAITurn(QList<APIMessage> context, AIConfiguration config,
                                     TokenCallback onToken) override
    {
        return run(lastRequest(context), config.systemPrompt, std::move(onToken));
    }
    Task<AITurnResult> runGeminiTurn(QList<APIMessage> context, AIConfiguration config,
                                     TokenCallback onToken) override
    {
        return run(lastRequest(context), config.systemPrompt, std::move(onToken));
    }

private:
    static int lastRequest(const QList<APIMessage> &context)
    {
        int number = 0;
        for (const APIMessage &message : context)
            if (const auto *user = std::get_if<APIMessage::User>(&message.entry))
                number = numberIn(user->text);
        return number;
    }

    Task<AITurnResult> run(int number, QString systemPrompt, TokenCallback onToken)
    {
        const QString mark = QStringLiteral("<%1>").arg(number);
        if (m_dice.oneIn(2))
            co_await sleepFor(std::chrono::seconds(1 + m_dice.roll(10)));
        if (systemPrompt.startsWith(QStringLiteral("Generate a very short title")))
            co_return AITurnResult{QStringLiteral("Title ") + mark, {}};
        AITurnResult result;
        for (int tokens = m_dice.roll(3); tokens > 0; --tokens) {
            const QString token = QString(m_dice.roll(250), QLatin1Char('x')) + mark;
            onToken(token);
            result.text += token;
            if (m_dice.oneIn(2))
                co_await sleepFor(std::chrono::seconds(1 + m_dice.roll(10)));
        }
        if (m_dice.oneIn(8))
            throw AIServiceError(AIServiceError::Api{QStringLiteral("not today")});
        if (m_dice.oneIn(8))
            co_await sleepFor(std::chrono::hours(1));
        if (m_dice.oneIn(2))
            for (int calls = m_dice.roll(4); calls > 0; --calls)
                result.toolCalls.append(someCall(mark));
        co_return result;
    }

    AIToolCall someCall(const QString &mark)
    {
        static const QStringList names{QStringLiteral("ask_user"),
                                       QStringLiteral("edit_file"),
                                       QStringLiteral("task"),
                                       QStringLiteral("read_file"),
                                       QStringLiteral("run_shell_command"),
                                       QStringLiteral("mcp_files_read")};
        // So long that it is looked at off the main thread.
        static const std::string longCommand = QString("x ").repeated(33'000).toStdString() + "; rm -rf x";
        // No two alike: what a repetition ends is told elsewhere.
        ++m_calls;
        return {names.at(m_dice.roll(names.size())),
                boost::json::object{{"command", m_dice.oneIn(3) ? longCommand : "rm -rf x"},
                                    {"description", jsonFromText(mark)},
                                    {"question", m_calls}},
                {},
                {}};
    }

    Dice m_dice;
    int m_calls = 0;
};

} // namespace morvane
