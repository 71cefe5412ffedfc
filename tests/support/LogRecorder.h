#pragma once

#include <QLoggingCategory>
#include <QStringList>

namespace morvane {

/// Switches the program's logging on and hears it instead of standard error, as long as it lives. One within
/// another takes the lines from it. What the toolkit itself says goes where it went before. Any thread may
/// log; recorders are made and destroyed on the main thread.
class LogRecorder {
public:
    LogRecorder();
    ~LogRecorder();
    LogRecorder(const LogRecorder &) = delete;
    LogRecorder &operator=(const LogRecorder &) = delete;

    /// What was logged, "CATEGORY: TEXT".
    QStringList lines() const;

private:
    static void hear(QtMsgType type, const QMessageLogContext &context, const QString &text);

    QStringList m_lines;
    LogRecorder *m_outer;
    QtMessageHandler m_handlerBefore;
};

/// Whether a line could quote what belongs to the user: the path of a file, an address, or what the tests
/// call a secret.
bool mayQuoteTheUser(const QString &line);
/// The lines of that kind in what a program has written to standard error with its log switched on.
QStringList linesThatMayQuoteTheUser(const QString &output);

} // namespace morvane
