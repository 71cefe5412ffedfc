#include "app/ActivityLog.h"

#include "app/LogText.h"
#include "base/Text.h"
#include "base/Uuid.h"

#include <QDateTime>

using namespace Qt::StringLiterals;

namespace morvane {

void ActivityLog::log(const QString &text, ActivityStep::Kind kind)
{
    append(text, {}, kind);
}

void ActivityLog::log(const QString &beginning, const QString &outside, ActivityStep::Kind kind)
{
    const QString line = flattened(outside, logTextLimit);
    append(beginning + line, line == outside ? QString() : beginning + outside, kind);
}

void ActivityLog::append(const QString &text, const QString &whole, ActivityStep::Kind kind)
{
    m_steps.append({newUuid(), text, whole, kind, QDateTime::currentDateTimeUtc()});
    Q_EMIT stepAppended(m_steps.size() - 1);
}

void ActivityLog::logResult(const AIToolCall &call, const ToolResult &result, const QString &prefix)
{
    QString name = spokenToolName(call.name);
    if (!prefix.isEmpty())
        name = prefix + u' ' + name;
    const QString text = flattened(result.text, logTextLimit);
    if (result.failed)
        log(name + u" failed: "_s + text, ActivityStep::Kind::error);
    else
        log(name + u" returned: "_s + text, ActivityStep::Kind::info);
}

void ActivityLog::logFinished(const QStringList &ranTools)
{
    if (ranTools.isEmpty()) {
        log(u"Finished. No tools were needed."_s, ActivityStep::Kind::success);
        return;
    }
    QStringList names;
    for (const QString &tool : ranTools)
        names.append(spokenToolName(tool));
    log(u"Finished. Completed: "_s + names.join(u", "_s) + u'.', ActivityStep::Kind::success);
}

void ActivityLog::clear()
{
    if (m_steps.isEmpty())
        return;
    m_steps.clear();
    Q_EMIT cleared();
}

} // namespace morvane
