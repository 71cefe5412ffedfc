#pragma once

#include <QByteArray>
#include <QLoggingCategory>
#include <exception>

namespace morvane {

/// A folder's category of the toolkit's logging, "morvane.net" for example. Silent until QT_LOGGING_RULES
/// names it. What is logged tells of the program only: no contents, keys, addresses or paths of the user.
class FolderLog : public QLoggingCategory {
public:
    explicit FolderLog(const char *name) : QLoggingCategory(name, QtFatalMsg) {}
};

inline const QLoggingCategory &baseLog()
{
    static const FolderLog log("morvane.base");
    return log;
}

/// What kind of failure this is, for a log: its type, and the system's number where it has one. Not its text,
/// which may quote what belongs to the user.
QByteArray kindOfFailure(const std::exception &failure);
QByteArray kindOfFailure(const std::exception_ptr &failure);
/// The same for the exception that is being handled.
QByteArray kindOfCurrentFailure();

} // namespace morvane
