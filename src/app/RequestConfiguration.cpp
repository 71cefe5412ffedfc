#include "app/RequestConfiguration.h"

#include "app/BrowserWindowPort.h"
#include "base/Text.h"
#include "store/SettingsStore.h"
#include "tools/BuiltinTools.h"
#include "tools/ToolServerPort.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

RequestConfiguration::RequestConfiguration(const SettingsStore &settings, const ToolServerPort &toolServers,
                                           const BrowserWindowPort &browserWindow,
                                           std::function<QString()> machineSummary)
    : m_settings(settings), m_toolServers(toolServers), m_browserWindow(browserWindow),
      m_machineSummary(std::move(machineSummary))
{
}

AIConfiguration RequestConfiguration::build() const
{
    AIConfiguration config;
    config.provider = m_settings.providerID();
    config.apiKey = m_settings.apiKey();
    config.model = trimmed(m_settings.model());
    config.systemPrompt = systemPrompt();
    config.temperature = m_settings.temperature();
    config.tools = BuiltinTools::all(m_settings.useTools() ? UseTools::yes : UseTools::no) +
                   m_toolServers.exposedAITools();
    config.baseURL = m_settings.customBaseURL();
    return config;
}

QString RequestConfiguration::systemPrompt() const
{
    QString prompt = m_settings.systemPrompt() + u"\n\nYou are running on: "_s + m_machineSummary();
    if (m_browserWindow.isVisible()) {
        prompt +=
            u"\n\n[Browser window is open — the user watches live. For web tasks use "
            "browser_open/browser_read/browser_click/browser_type/browser_scroll/browser_back. You can do "
            "anything in the browser: click links, fill forms, type and submit. Use browser_* tools, then "
            "browser_read to verify.]"_s;
    }
    return prompt;
}

} // namespace morvane
