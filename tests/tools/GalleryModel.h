#pragma once

#include "app/AppModel.h"
#include "async/Scheduler.h"
#include "async/SystemClock.h"
#include "store/ConversationStore.h"
#include "store/SettingsStore.h"
#include "support/FakeSurroundings.h"
#include "support/FakeToolServerList.h"
#include "support/TemporaryHome.h"
#include "ui/window/MainWindow.h"

namespace morvane {

/// An application model on an empty home with nothing real behind it, for windows that want one.
struct GalleryModel : FakeSurroundings {
    enum class User { known, newcomer };

    explicit GalleryModel(User user = User::known)
    {
        if (user == User::known)
            model.completeOnboarding();
    }
    ~GalleryModel() { scheduler.shutdown(std::chrono::seconds(1)); }

    TemporaryHome home;
    SystemClock clock;
    Scheduler scheduler{clock};
    SettingsStore settings{home.path(QStringLiteral("Morvane.conf")), keychain};
    ConversationStore store{home.path(QStringLiteral("Conversations"))};
    FakeToolServerList servers{scheduler, home.path(QStringLiteral("tool-servers"))};
    AppServices services = servicesAround({
        .scheduler = scheduler,
        .settings = settings,
        .conversations = store,
        .executeTool = [](ToolPermit) -> Task<ToolResult> { co_return QString(); },
        .machine = QStringLiteral("MacBook Pro (14-inch, 2023) with a Apple M3 Pro chip, 36 GB "
                                  "of RAM, running macOS 14.5."),
    });
    SettingsServices settingsServices = settingsServicesAround(services, 36);
    MainWindowServices windowServices{announcer, browserWindow, servers.manager, settingsServices,
                                      attachments};
    AppModel model{services};
};

} // namespace morvane
