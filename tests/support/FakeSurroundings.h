#pragma once

#include "app/AppServices.h"
#include "app/PermissionsModel.h"
#include "app/SettingsModel.h"
#include "support/FakeAIService.h"
#include "support/FakeAnnouncer.h"
#include "support/FakeAttachments.h"
#include "support/FakeDesktop.h"
#include "support/FakeDesktopSettings.h"
#include "support/FakeKeychain.h"
#include "support/FakeModelCatalog.h"
#include "support/FakeNotificationCenter.h"
#include "support/FakePorts.h"
#include "support/FakeUpdateService.h"

#include <memory>

namespace morvane {

/// Everything around an application model, made up. The one place where what the program's `main` puts
/// together is put together for tests, galleries and benchmarks.
struct FakeSurroundings {
    /// What is real, and what the fakes cannot know.
    struct Real {
        Scheduler &scheduler;
        SettingsStore &settings;
        ConversationStore &conversations;
        std::function<Task<ToolResult>(ToolPermit)> executeTool;
        QString machine;
        AIService *service = nullptr;             ///< The fake one if null.
        AttachmentService *attachments = nullptr; ///< The fake one if null.
        UpdateService *updates = nullptr;         ///< The fake one if null.
    };

    AppServices servicesAround(const Real &real)
    {
        return {
            real.scheduler,
            real.settings,
            real.conversations,
            real.service ? *real.service : service,
            announcer,
            notifications,
            toolServers,
            browserWindow,
            real.updates ? *real.updates : updates,
            urls,
            localModel,
            real.attachments ? *real.attachments : attachments,
            real.executeTool,
            [machine = real.machine] { return machine; },
        };
    }

    SettingsServices settingsServicesAround(const AppServices &services, int memory)
    {
        permissions = std::make_unique<PermissionsModel>(services.scheduler, announcer, desktop.screen,
                                                         desktop.input, center, desktopSettings);
        return {services.scheduler,      services.settings,           modelCatalog, urls,
                services.machineSummary, [memory] { return memory; }, *permissions};
    }

    FakeKeychain keychain;
    FakeAIService service;
    FakeAnnouncer announcer;
    FakeNotifications notifications;
    FakeToolServers toolServers;
    FakeBrowserWindow browserWindow;
    FakeUpdateService updates;
    FakeLocalModel localModel;
    FakeAttachments attachments;
    FakeModelCatalog modelCatalog;
    FakeUrlOpener urls;
    FakeDesktop desktop;
    FakeNotificationCenter center;
    FakeDesktopSettings desktopSettings;
    std::unique_ptr<PermissionsModel> permissions;
};

} // namespace morvane
