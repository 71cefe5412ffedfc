#include "ui/conversation/ConversationContent.h"

#include "app/ActivityLog.h"
#include "app/Transcript.h"
#include "ui/controls/ReadableText.h"
#include "ui/conversation/MessageParts.h"

#include <QLocale>

using namespace Qt::StringLiterals;

namespace morvane {

using Kind = ConversationItem::Kind;

qsizetype ConversationContent::messageCount() const
{
    return m_transcript.messages().size();
}

qsizetype ConversationContent::completedCount() const
{
    return messageCount() - (hasActiveResponse() ? 1 : 0);
}

qsizetype ConversationContent::activityCount() const
{
    const qsizetype steps = stepCount();
    return steps == 0 || m_isActivityFolded ? qMin<qsizetype>(steps, 1) : steps + 1;
}

qsizetype ConversationContent::stepCount() const
{
    return m_activity.steps().size();
}

bool ConversationContent::hasActiveResponse() const
{
    const auto &messages = m_transcript.messages();
    return !messages.isEmpty() && messages.last().role == Role::assistant;
}

ConversationItem ConversationContent::item(qsizetype position) const
{
    const qsizetype completed = completedCount();
    if (position < completed)
        return {.kind = Kind::message, .index = position};
    const qsizetype inActivity = position - completed;
    if (inActivity >= activityCount())
        return {.kind = Kind::message, .index = completed};
    if (inActivity == 0)
        return {.kind = Kind::activityHeader, .index = 0};
    return {.kind = Kind::activityStep, .index = inActivity - 1};
}

qsizetype ConversationContent::position(const ConversationItem &item) const
{
    const qsizetype completed = completedCount();
    switch (item.kind) {
    case Kind::message:
        if (item.index >= m_transcript.messages().size())
            return -1;
        return item.index < completed ? item.index : completed + activityCount();
    case Kind::activityHeader:
        return activityCount() > 0 ? completed : -1;
    case Kind::activityStep:
        return item.index + 1 < activityCount() ? completed + 1 + item.index : -1;
    }
    Q_UNREACHABLE();
}

const ChatMessage &ConversationContent::message(const ConversationItem &item) const
{
    return m_transcript.messages().at(item.index);
}

const ActivityStep &ConversationContent::step(const ConversationItem &item) const
{
    return m_activity.steps().at(item.index);
}

QString ConversationContent::text(const ConversationItem &item) const
{
    switch (item.kind) {
    case Kind::message:
        return message(item).displayText();
    case Kind::activityHeader:
        return u"Activity"_s;
    case Kind::activityStep:
        return step(item).text;
    }
    Q_UNREACHABLE();
}

QString ConversationContent::accessibleName(const ConversationItem &item) const
{
    switch (item.kind) {
    case Kind::message:
        return message(item).accessibilityLabel();
    case Kind::activityHeader:
        return u"Activity, %1 steps"_s.arg(m_activity.steps().size());
    case Kind::activityStep:
        return readableText(step(item).text) + u", "_s + timeText(step(item));
    }
    Q_UNREACHABLE();
}

QString ConversationContent::whole(const ConversationItem &item) const
{
    return item.kind == Kind::activityStep ? step(item).whole : QString();
}

QString ConversationContent::copyText(const ConversationItem &item) const
{
    switch (item.kind) {
    case Kind::message:
        return message(item).text;
    case Kind::activityHeader:
        return accessibleName(item);
    case Kind::activityStep:
        return step(item).whole.isEmpty() ? step(item).text : step(item).whole;
    }
    Q_UNREACHABLE();
}

bool ConversationContent::isFormatted(const ConversationItem &item) const
{
    if (item.kind != Kind::message)
        return false;
    return morvane::isFormatted(message(item));
}

QString ConversationContent::timeText(const ActivityStep &step)
{
    return QLocale().toString(step.date.toLocalTime().time(), QLocale::ShortFormat);
}

} // namespace morvane
