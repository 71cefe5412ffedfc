#include "base/Uuid.h"
#include "store/ConversationFiles.h"
#include "store/UserDefaults.h"
#include "support/TemporaryHome.h"

#include <QCoreApplication>
#include <QProcess>
#include <QStringList>
#include <csignal>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// A second process that writes through a store until it is killed (see CrashingWriter.cpp).
class Writer {
public:
    Writer(const QString &role, const QString &path)
    {
        m_process.start(QCoreApplication::applicationFilePath(), {u"--writer"_s, role, path});
    }

    /// Waits for the next line that it prints.
    QByteArray nextLine()
    {
        while (!m_process.canReadLine())
            if (!m_process.waitForReadyRead(20'000))
                return {};
        return m_process.readLine().trimmed();
    }
    void kill()
    {
        m_process.kill();
        m_process.waitForFinished();
    }
    /// Waits for its end; whether a signal ended it.
    bool diedOfASignal()
    {
        return m_process.waitForFinished(20'000) && m_process.exitStatus() == QProcess::CrashExit;
    }

private:
    QProcess m_process;
};

class CrashTest : public testing::Test {
protected:
    TemporaryHome home;
};

TEST_F(CrashTest, SettingSurvivesACrashRightAfterItsChange)
{
    const QString path = home.path("Morvane/Morvane.conf");
    Writer writer("settings-once", path);
    ASSERT_TRUE(writer.diedOfASignal());
    const UserDefaults defaults(path);
    EXPECT_EQ(defaults.value("model"), QVariant("set right before the crash"));
    EXPECT_EQ(defaults.value("apiKey_ollama"), QVariant("typed right before the crash"));
}

TEST_F(CrashTest, SettingsAreWholeWheneverTheProgramDies)
{
    const QString path = home.path("Morvane/Morvane.conf");
    for (int round = 0; round < 20; ++round) {
        Writer writer("settings", path);
        for (int line = 0; line <= round % 7; ++line)
            ASSERT_FALSE(writer.nextLine().isEmpty());
        writer.kill();
        const UserDefaults defaults(path);
        ASSERT_EQ(defaults.value("apiKey_ollama"), QVariant("kept"));
        ASSERT_EQ(defaults.value("systemPrompt").toString().size(), 50'000);
    }
}

TEST_F(CrashTest, ConversationsAreWholeWheneverTheProgramDies)
{
    const QString folder = home.path("Conversations");
    double created = 0;
    for (int round = 0; round < 20; ++round) {
        Writer writer("conversations", folder);
        for (int line = 0; line <= round % 7; ++line)
            ASSERT_FALSE(writer.nextLine().isEmpty());
        writer.kill();
        ConversationFiles files(folder);
        const auto listed = files.list();
        ASSERT_EQ(listed.size(), 1);
        const auto file = files.load(listed.front().id);
        ASSERT_TRUE(file.has_value());
        EXPECT_EQ(file->messages.size(), 4);
        if (round > 0)
            EXPECT_EQ(file->createdAt, created);
        created = file->createdAt;
    }
}

} // namespace
} // namespace morvane
