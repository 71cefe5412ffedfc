#include "support/LogRecorder.h"

#include <QRegularExpression>
#include <cstdio>
#include <mutex>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

// The toolkit's handler is a function and has no other way to the recorder.
std::mutex mutex;
LogRecorder *innermost = nullptr; ///< Guarded by the mutex.

} // namespace

LogRecorder::LogRecorder()
{
    {
        const std::lock_guard lock(mutex);
        m_outer = std::exchange(innermost, this);
    }
    m_handlerBefore = qInstallMessageHandler(&LogRecorder::hear);
    if (!m_outer)
        QLoggingCategory::setFilterRules(u"morvane.*=true"_s);
}

LogRecorder::~LogRecorder()
{
    if (!m_outer)
        QLoggingCategory::setFilterRules({});
    qInstallMessageHandler(m_handlerBefore);
    const std::lock_guard lock(mutex);
    innermost = m_outer;
}

QStringList LogRecorder::lines() const
{
    const std::lock_guard lock(mutex);
    return m_lines;
}

void LogRecorder::hear(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    const auto category = QLatin1StringView(context.category);
    if (category.startsWith("morvane."_L1)) {
        const std::lock_guard lock(mutex);
        if (innermost)
            innermost->m_lines.append(category + ": "_L1 + text);
    } else {
        std::fprintf(stderr, "%s\n", qPrintable(qFormatLogMessage(type, context, text)));
    }
}

bool mayQuoteTheUser(const QString &line)
{
    // Not "Input/output error" or "HTTP/3", which the system and the libraries say.
    static const QRegularExpression place(uR"((?:^|[\s"'(\[=:~])/+[\w.]|/[^\s"/]*\.\w)"_s);
    return line.contains(place) || line.contains("secret"_L1, Qt::CaseInsensitive);
}

QStringList linesThatMayQuoteTheUser(const QString &output)
{
    QStringList lines = output.split(u'\n');
    lines.removeIf(
        [](const QString &line) { return !line.startsWith("morvane."_L1) || !mayQuoteTheUser(line); });
    return lines;
}

} // namespace morvane
