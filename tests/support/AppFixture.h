#pragma once

#include "app/AppModel.h"
#include "async/Scheduler.h"
#include "store/ConversationStore.h"
#include "store/SettingsStore.h"
#include "support/FakeClock.h"
#include "support/FakeSurroundings.h"
#include "support/FakeToolServerList.h"
#include "support/RunTask.h"
#include "support/TemporaryHome.h"

#include <gmock/gmock.h>
#include <memory>

namespace morvane {

/// An application model on a temporary home, with a scripted model and recorded surroundings. The user has
/// been greeted already.
class AppFixture : public testing::Test, protected FakeSurroundings {
protected:
    AppFixture();
    ~AppFixture() override;

    /// Builds the model anew from what is on disk, as a start of the program does.
    void start();
    /// Lets the program run until it waits for nothing but the clock, the user or the model: disk and
    /// background threads have done their work, and what they brought is taken in.
    void settle();
    /// Lets the program run until no request is under way any more, and settles.
    void finishRun();
    void sendAndFinish(const QString &text);

    /// The model's next turn never ends by itself.
    void neverAnswer();

    /// The saved conversations.
    QList<ConversationMeta> listed() { return runTask(scheduler, store->list()); }
    /// All entries of one kind in the model's context, in order.
    template <class Entry> QList<Entry> contextEntries() const
    {
        QList<Entry> found;
        for (const APIMessage &message : model->context())
            if (const auto *entry = std::get_if<Entry>(&message.entry))
                found.append(*entry);
        return found;
    }
    QStringList activityTexts() const;
    ActivityStep lastStep() const { return model->activity().steps().constLast(); }
    const ChatMessage &lastMessage() const { return model->messages().constLast(); }
    /// The tools that really ran, in order.
    QStringList executed;
    /// What the next tools answer; "tool result" when empty.
    QStringList toolResults;
    Clock::Duration toolTime{};
    /// Takes the place of the tools, if set.
    std::function<Task<ToolResult>(ToolPermit)> tool;

    TemporaryHome home;
    FakeClock clock;
    Scheduler scheduler{clock};
    std::unique_ptr<SettingsStore> settings;
    std::unique_ptr<ConversationStore> store;
    FakeToolServerList toolServerList{scheduler, home.path(QStringLiteral("tool-servers"))};
    std::unique_ptr<AppServices> services;
    std::unique_ptr<SettingsServices> settingsServices;
    std::unique_ptr<AppModel> model;

private:
    Task<ToolResult> executeTool(ToolPermit permit);
};

} // namespace morvane
