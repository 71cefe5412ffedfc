#pragma once

#include "app/AppModel.h"
#include "app/AppServices.h"
#include "app/UpdateModel.h"
#include "async/Scheduler.h"
#include "async/SystemClock.h"
#include "store/ConversationStore.h"
#include "store/SettingsStore.h"
#include "support/FakeAIService.h"
#include "support/FakeAnnouncer.h"
#include "support/FakeAttachments.h"
#include "support/FakeKeychain.h"
#include "support/FakeModelCatalog.h"
#include "support/FakePorts.h"
#include "support/TemporaryHome.h"
#include "ui/window/MainWindow.h"

namespace morvane {

/// An application model on an empty home with nothing real behind it, for windows that want one.
struct GalleryModel {
    ~GalleryModel() { scheduler.shutdown(std::chrono::seconds(1)); }

    TemporaryHome home;
    SystemClock clock;
    Scheduler scheduler{clock};
    FakeKeychain keychain;
    SettingsStore settings{home.path(QStringLiteral("Morvane.conf")), keychain};
    ConversationStore store{home.path(QStringLiteral("Conversations"))};
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
    AppServices services{
        scheduler,
        settings,
        store,
        service,
        announcer,
        notifications,
        toolServers,
        browserWindow,
        updates,
        localModel,
        attachments,
        [](ToolPermit) -> Task<ToolResult> { co_return QString(); },
        [] {
            return QStringLiteral("MacBook Pro (14-inch, 2023) with a Apple M3 Pro chip, 36 GB "
                                  "of RAM, running macOS 14.5.");
        },
    };
    SettingsServices settingsServices{
        scheduler, settings, modelCatalog, urls, services.machineSummary, [] { return 36; },
    };
    MainWindowServices windowServices{announcer, browserWindow, updates, settingsServices};
    AppModel model{services};
};

} // namespace morvane
