#include "app/ContextTrimming.h"

#include "base/Text.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

constexpr qsizetype toolResultLimit = 1200;
constexpr qsizetype noteQuoteLimit = 120;

/// What an entry costs on the wire besides its text.
constexpr qsizetype messageOverhead = 8;
constexpr qsizetype callOverhead = 48;

const QString toolResultMarker = u"\n[...output truncated...]"_s;
const QString messageMarker = u"\n[…message truncated…]"_s;

qsizetype contextBudget(ProviderID provider)
{
    return provider == ProviderID::ollama ? 64000 : 32000;
}

qsizetype keepTarget(qsizetype budget)
{
    return budget * 7 / 10;
}

/// Number of characters, counted no further than one beyond `limit`: long texts need not be read to their end
/// to know that they do not fit.
qsizetype countUpTo(const QString &text, qsizetype limit)
{
    return characterOffset(text, limit) < text.size() ? limit + 1 : characterCount(text);
}

qsizetype costOf(const APIMessage::User &user, qsizetype limit)
{
    qsizetype cost = countUpTo(user.text, limit) + messageOverhead;
    for (const ChatAttachment &attachment : user.attachments) {
        cost += countUpTo(attachment.extractedText, limit);
        cost += attachment.data ? attachment.data->size() / 2 : 0;
    }
    return cost;
}

qsizetype costOf(const APIMessage::Assistant &assistant, qsizetype limit)
{
    return countUpTo(assistant.text, limit) + messageOverhead;
}

qsizetype costOf(const APIMessage::FunctionCall &call, qsizetype limit)
{
    return countUpTo(call.name, limit) + callOverhead;
}

qsizetype costOf(const APIMessage::FunctionResponse &response, qsizetype limit)
{
    return countUpTo(response.content, limit) + messageOverhead;
}

/// The entry's cost if it is at most `limit`, else some number above it.
qsizetype costOf(const APIMessage &message, qsizetype limit)
{
    return std::visit([limit](const auto &entry) { return costOf(entry, limit); }, message.entry);
}

/// A result that was shortened before is left alone, so that an unchanged context stays shared.
void shortenToolResult(QList<APIMessage> &context, qsizetype index)
{
    const auto *const response = std::get_if<APIMessage::FunctionResponse>(&context.at(index).entry);
    if (!response)
        return;
    const QString &content = response->content;
    const qsizetype kept = characterOffset(content, toolResultLimit);
    if (kept == content.size() || QStringView(content).sliced(kept) == toolResultMarker)
        return;
    APIMessage::FunctionResponse shortened{response->id, response->name,
                                           content.first(kept) + toolResultMarker};
    context[index].entry = std::move(shortened);
}

struct Cut {
    bool overBudget = false;
    qsizetype keepFrom = 0; ///< The first entry that fits into the keep target together with all newer ones.
    qsizetype shortenedFrom = 0; ///< Older tool results are as they came.
};

/// Shortens tool results on the way, and goes no further back than the budget reaches: what is older is cut,
/// however long it is.
Cut shortenAndFindCut(QList<APIMessage> &context, qsizetype budget)
{
    const qsizetype target = keepTarget(budget);
    Cut cut;
    qsizetype sum = 0;
    cut.shortenedFrom = context.size();
    while (cut.shortenedFrom > 0 && sum <= budget) {
        const qsizetype index = --cut.shortenedFrom;
        const bool fitted = sum <= target;
        shortenToolResult(context, index);
        sum += costOf(context.at(index), budget);
        if (fitted && sum > target)
            cut.keepFrom = index + 1;
    }
    cut.overBudget = sum > budget;
    return cut;
}

void shortenNewest(APIMessage &message, qsizetype target)
{
    if (auto *const user = std::get_if<APIMessage::User>(&message.entry))
        user->text = firstCharacters(user->text, target) + messageMarker;
    else if (auto *const assistant = std::get_if<APIMessage::Assistant>(&message.entry))
        assistant->text = firstCharacters(assistant->text, target) + messageMarker;
    else if (auto *const response = std::get_if<APIMessage::FunctionResponse>(&message.entry))
        response->content = firstCharacters(response->content, target);
}

bool isCall(const APIMessage &message)
{
    return std::holds_alternative<APIMessage::FunctionCall>(message.entry);
}

bool isCallOrResponse(const APIMessage &message)
{
    return isCall(message) || std::holds_alternative<APIMessage::FunctionResponse>(message.entry);
}

} // namespace

QList<APIMessage> apiContext(const QList<ChatMessage> &messages)
{
    QList<APIMessage> context;
    context.reserve(messages.size());
    for (const ChatMessage &message : messages) {
        const QString text = message.text.trimmed();
        const bool isUser = message.role == Role::user;
        if (text.isEmpty() && (!isUser || message.attachments.isEmpty()))
            continue;
        if (isUser)
            context.append(APIMessage{APIMessage::User{text, message.attachments}});
        else
            context.append(APIMessage{APIMessage::Assistant{text}});
    }
    return context;
}

QList<APIMessage> trimmedAPIContext(QList<APIMessage> context, ProviderID provider)
{
    if (context.isEmpty())
        return context;
    const qsizetype budget = contextBudget(provider);
    const Cut cut = shortenAndFindCut(context, budget);
    if (!cut.overBudget)
        return context;
    if (cut.keepFrom == context.size()) {
        for (qsizetype index = 0; index < cut.shortenedFrom; ++index)
            shortenToolResult(context, index);
        shortenNewest(context.last(), keepTarget(budget));
        return context;
    }

    auto first = context.cbegin() + cut.keepFrom;
    auto end = context.cend();
    first = std::find_if_not(first, end, isCallOrResponse);
    while (first != end && isCall(*(end - 1)))
        --end;

    QList<APIMessage> kept;
    kept.reserve(end - first + 1);
    kept.append(APIMessage{APIMessage::User{trimmedNote(context), {}}});
    std::copy(first, end, std::back_inserter(kept));
    return kept;
}

QString trimmedNote(const QList<APIMessage> &context)
{
    QString beginning = u"the start of the conversation"_s;
    for (const APIMessage &message : context) {
        const auto *const user = std::get_if<APIMessage::User>(&message.entry);
        if (user && !user->text.isEmpty()) {
            beginning = firstCharacters(user->text, noteQuoteLimit);
            break;
        }
    }
    return u"[Earlier part of this conversation was trimmed to save space. It began with: \""_s + beginning +
           u"\".]"_s;
}

} // namespace morvane
