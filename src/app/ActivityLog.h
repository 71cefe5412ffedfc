#pragma once

#include "model/AITool.h"
#include "model/ActivityStep.h"
#include "model/ToolResult.h"

#include <QList>
#include <QObject>
#include <QStringList>

namespace morvane {

/// The activity log of the open conversation: grows without limit, is never stored. Main thread.
class ActivityLog : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    const QList<ActivityStep> &steps() const { return m_steps; }

    void log(const QString &text, ActivityStep::Kind kind);
    /// A line that ends in a text from outside, flattened and cut to the length of a log's line. The whole of
    /// it stays at hand.
    void log(const QString &beginning, const QString &outside, ActivityStep::Kind kind);
    /// The line that closes a tool call; `prefix` ("Subagent" or empty) stands before the tool's name.
    void logResult(const AIToolCall &call, const ToolResult &result, const QString &prefix);
    /// The last line of a normal run; `ranTools` in order of first use.
    void logFinished(const QStringList &ranTools);
    void clear();

Q_SIGNALS:
    void stepAppended(qsizetype index);
    void cleared();

private:
    void append(const QString &text, const QString &whole, ActivityStep::Kind kind);

    QList<ActivityStep> m_steps;
};

} // namespace morvane
