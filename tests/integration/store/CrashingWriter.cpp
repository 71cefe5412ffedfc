#include "CrashingWriter.h"

#include "async/Scheduler.h"
#include "base/Uuid.h"
#include "platform/NoKeychain.h"
#include "store/ConversationStore.h"
#include "store/SettingsStore.h"
#include "support/FakeClock.h"
#include "support/RunTask.h"
#include "support/SampleConversation.h"

#include <csignal>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

void printLine()
{
    std::puts("written");
    std::fflush(stdout);
}

void changeOnceAndDie(const QString &path)
{
    NoKeychain keychain;
    SettingsStore settings(path, keychain);
    settings.setApiKey("typed right before the crash");
    settings.setModel("set right before the crash");
    std::raise(SIGKILL);
}

[[noreturn]] void changeForever(const QString &path)
{
    NoKeychain keychain;
    SettingsStore settings(path, keychain);
    settings.setApiKey("kept");
    for (char16_t letter = u'a';; letter = letter == u'z' ? u'a' : static_cast<char16_t>(letter + 1)) {
        settings.setSystemPrompt(QString(50'000, QChar(letter)));
        printLine();
    }
}

[[noreturn]] void saveForever(const QString &folder)
{
    FakeClock clock;
    Scheduler scheduler(clock);
    ConversationStore store(folder);
    const ConversationFile sample = sampleConversation(4, 20'000, 200'000);
    const QUuid id = *uuidFromText(u"0A1B2C3D-4E5F-4A6B-8C9D-0E1F2A3B4C5D");
    for (;;) {
        store.save(id, sample.title, sample.messages);
        runTask(scheduler, store.list());
        printLine();
        store.save(id, sample.title, sample.messages);
    }
}

} // namespace

int runCrashingWriter(const QString &role, const QString &path)
{
    if (role == u"settings-once"_s)
        changeOnceAndDie(path);
    if (role == u"settings"_s)
        changeForever(path);
    if (role == u"conversations"_s)
        saveForever(path);
    return 1;
}

} // namespace morvane
