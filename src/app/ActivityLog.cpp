#include "app/ActivityLog.h"

#include "app/LogText.h"
#include "base/Text.h"
#include "base/Uuid.h"

#include <QDateTime>

namespace morvane {

void ActivityLog::log(const QString &text, ActivityStep::Kind kind)
{
    m_steps.append({newUuid(), text, kind, QDateTime::currentDateTimeUtc()});
    Q_EMIT stepAppended(m_steps.size() - 1);
}

void ActivityLog::logResult(const AIToolCall &call, const QString &result, const QString &prefix)
{
    QString name = spokenToolName(call.name);
    if (!prefix.isEmpty())
        name = prefix + QLatin1Char(' ') + name;
    const QString text = flattened(result, logTextLimit);
    if (result.startsWith(QLatin1String("Error:")))
        log(name + QStringLiteral(" failed: ") + text, ActivityStep::Kind::error);
    else
        log(name + QStringLiteral(" returned: ") + text, ActivityStep::Kind::info);
}

void ActivityLog::logFinished(const QStringList &ranTools)
{
    if (ranTools.isEmpty()) {
        log(QStringLiteral("Finished. No tools were needed."), ActivityStep::Kind::success);
        return;
    }
    QStringList names;
    for (const QString &tool : ranTools)
        names.append(spokenToolName(tool));
    log(QStringLiteral("Finished. Completed: ") + names.join(QStringLiteral(", ")) + QLatin1Char('.'),
        ActivityStep::Kind::success);
}

void ActivityLog::clear()
{
    if (m_steps.isEmpty())
        return;
    m_steps.clear();
    Q_EMIT cleared();
}

} // namespace morvane
