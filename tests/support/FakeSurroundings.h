#pragma once

#include "app/AppServices.h"
#include "app/SettingsModel.h"
#include "app/UpdateModel.h"
#include "support/FakeAIService.h"
#include "support/FakeAnnouncer.h"
#include "support/FakeAttachments.h"
#include "support/FakeKeychain.h"
#include "support/FakeModelCatalog.h"
#include "support/FakePorts.h"

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
            updates,
            localModel,
            real.attachments ? *real.attachments : attachments,
            real.executeTool,
            [machine = real.machine] { return machine; },
        };
    }

    SettingsServices settingsServicesAround(const AppServices &services, int memory)
    {
        return {services.scheduler,      services.settings,          modelCatalog, urls,
                services.machineSummary, [memory] { return memory; }};
    }

    FakeKeychain keychain;
    FakeAIService service;
    FakeAnnouncer announcer;
    FakeNotifications notifications;
    FakeToolServers toolServers;
    FakeBrowserWindow browserWindow;
    UpdateModel updates;
    FakeLocalModel localModel;
    FakeAttachments attachments;
    FakeModelCatalog modelCatalog;
    FakeUrlOpener urls;
};

} // namespace morvane
