#pragma once

#include "model/AIConfiguration.h"

#include <QString>
#include <functional>

namespace morvane {

class BrowserWindowPort;
class SettingsStore;
class ToolServerPort;

/// Builds what one request to the model needs, from the settings as they are at that moment. Main thread.
class RequestConfiguration {
public:
    /// All of them outlive the object. `machineSummary` gives one sentence on the machine.
    RequestConfiguration(const SettingsStore &settings, const ToolServerPort &toolServers,
                         const BrowserWindowPort &browserWindow, std::function<QString()> machineSummary);

    AIConfiguration build() const;

private:
    QString systemPrompt() const;

    const SettingsStore &m_settings;
    const ToolServerPort &m_toolServers;
    const BrowserWindowPort &m_browserWindow;
    std::function<QString()> m_machineSummary;
};

} // namespace morvane
