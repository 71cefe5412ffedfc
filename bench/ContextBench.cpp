// What the bookkeeping of the context costs before each turn: trimming of a context of 1 MB with many tool
// results, and rebuilding it from a long conversation. Prints JSON.

#include "Median.h"

#include "app/ContextTrimming.h"
#include "model/APIMessage.h"
#include "model/ChatMessage.h"

#include <cstdio>

using namespace Qt::StringLiterals;

using namespace morvane;

namespace {

constexpr int entries = 1000;
constexpr qsizetype bytesEach = 1024;
constexpr int runs = 51;

QList<APIMessage> toolContext(const QString &text)
{
    QList<APIMessage> context{{APIMessage::User{u"Begin."_s, {}}}};
    for (int entry = 0; entry < entries / 2; ++entry) {
        const QString id = QString::number(entry);
        context.append({APIMessage::FunctionCall{id, u"read_file"_s, {}, std::nullopt}});
        context.append({APIMessage::FunctionResponse{id, u"read_file"_s, text + text}});
    }
    return context;
}

QList<ChatMessage> conversation(const QString &text)
{
    QList<ChatMessage> messages;
    for (int row = 0; row < entries; ++row) {
        ChatMessage message;
        message.role = row % 2 == 0 ? Role::user : Role::assistant;
        message.text = text;
        messages.append(message);
    }
    return messages;
}

} // namespace

int main()
{
    const QString ascii(bytesEach, u'a');
    const QString mixed = u"Grüße, 世界! "_s.repeated(bytesEach / 12);
    const QList<APIMessage> asciiContext = toolContext(ascii);
    const QList<APIMessage> mixedContext = toolContext(mixed);
    const QList<ChatMessage> messages = conversation(ascii);
    qsizetype kept = 0;
    const auto trim = [&kept](const QList<APIMessage> &context) {
        kept += trimmedAPIContext(context, ProviderID::openai).size();
    };
    std::printf("{\"entries\": %d, \"trim_1mb_ascii_ms\": %.3f, \"trim_1mb_mixed_ms\": %.3f, "
                "\"rebuild_1mb_ms\": %.3f, \"kept\": %lld}\n",
                entries, medianMilliseconds(runs, [&] { trim(asciiContext); }),
                medianMilliseconds(runs, [&] { trim(mixedContext); }),
                medianMilliseconds(runs, [&] { kept += apiContext(messages).size(); }),
                static_cast<long long>(kept));
    return 0;
}
