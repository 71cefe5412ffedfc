#include "tools/ShellEnvironment.h"

namespace morvane {
namespace {

constexpr QByteArrayView name = "PATH=";

QByteArray extended(QByteArray path)
{
    for (const char *const folder : {"/opt/homebrew/bin:", "/usr/local/bin:"})
        if (!path.contains(folder))
            path.prepend(folder);
    return path;
}

} // namespace

QList<QByteArray> shellEnvironment(QList<QByteArray> environment)
{
    for (QByteArray &variable : environment) {
        if (variable.startsWith(name)) {
            variable = name.toByteArray() + extended(variable.sliced(name.size()));
            return environment;
        }
    }
    environment.append(name.toByteArray() + extended("/usr/bin:/bin:/usr/sbin:/sbin"));
    return environment;
}

} // namespace morvane
