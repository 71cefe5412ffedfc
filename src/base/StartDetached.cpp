#include "base/StartDetached.h"

#include "base/ChildProcess.h"

#include <QFile>

using namespace Qt::StringLiterals;

namespace morvane {

std::expected<void, QString> startDetached(const QString &path, const QStringList &arguments,
                                           const QList<QByteArray> &environment, int control)
{
    ChildProcess::Options options;
    // It forks, so that the program is the child of the system and leaves no zombie with us.
    options.program = "/usr/bin/setsid";
    options.arguments = {"--fork", QFile::encodeName(path)};
    for (const QString &argument : arguments)
        options.arguments.append(QFile::encodeName(argument));
    options.environment = environment;
    options.control = control;
    options.output = ChildProcess::Output::discarded;
    options.errors = ChildProcess::Errors::discarded;
    auto starter = ChildProcess::start(options);
    if (!starter)
        return std::unexpected(starter.error());
    if (const int status = starter->waitForStatus(); status != 0)
        return std::unexpected(u"status %1"_s.arg(status));
    return {};
}

} // namespace morvane
