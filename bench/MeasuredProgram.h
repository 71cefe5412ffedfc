#pragma once

#include "async/SystemClock.h"
#include "net/HttpClient.h"
#include "store/ConversationStore.h"
#include "store/SettingsStore.h"
#include "support/FakeSurroundings.h"
#include "support/FakeToolServerList.h"
#include "support/TemporaryHome.h"

namespace morvane {

/// What a program that is measured with its window stands on: real stores and a real network beside what is
/// made up. Whoever adds a model shuts the scheduler down before it goes.
struct MeasuredProgram : FakeSurroundings {
    TemporaryHome home;
    SystemClock clock;
    Scheduler scheduler{clock};
    HttpClient http;
    SettingsStore settings{home.path(QStringLiteral("Morvane.conf")), keychain};
    ConversationStore store{home.path(QStringLiteral("Conversations"))};
    FakeToolServerList servers{scheduler, home.path(QStringLiteral("tool-servers"))};
};

} // namespace morvane
