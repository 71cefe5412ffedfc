#include "update/RelaunchEnvironment.h"

#include <algorithm>
#include <array>

namespace morvane {

namespace {

constexpr std::array ofOneStart{
    "LD_LIBRARY_PATH=",          "LD_PRELOAD=",
    "QT_PLUGIN_PATH=",           "QT_QPA_PLATFORM_PLUGIN_PATH=",
    "QTWEBENGINEPROCESS_PATH=",  "QTWEBENGINE_RESOURCES_PATH=",
    "QTWEBENGINE_LOCALES_PATH=", "DESKTOP_STARTUP_ID=",
    "XDG_ACTIVATION_TOKEN=",     "QT_LINUX_ACCESSIBILITY_ALWAYS_ON=",
};

} // namespace

QList<QByteArray> relaunchEnvironment(QList<QByteArray> environment)
{
    environment.removeIf([](const QByteArray &variable) {
        return std::any_of(ofOneStart.begin(), ofOneStart.end(),
                           [&variable](const char *name) { return variable.startsWith(name); });
    });
    return environment;
}

} // namespace morvane
