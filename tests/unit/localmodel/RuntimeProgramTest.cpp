#include "localmodel/RuntimeProgram.h"

#include "localmodel/RuntimeInstaller.h"
#include "support/TemporaryHome.h"

#include <QFile>
#include <QFileInfo>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class RuntimeProgramTest : public testing::Test {
protected:
    QString program(const QString &name) const
    {
        const QString path = home.write(name, "#!");
        QFile(path).setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return path;
    }
    static QList<QByteArray> variables(const QList<QByteArray> &environment, const QByteArray &name)
    {
        QList<QByteArray> found;
        for (const QByteArray &variable : environment)
            if (variable.startsWith(name + '='))
                found.append(variable);
        return found;
    }

    TemporaryHome home;
};

TEST_F(RuntimeProgramTest, ThePlacesHaveTheirOrder)
{
    EXPECT_EQ(binaryCandidates(u"/data/Morvane"_s),
              QStringList({u"/Applications/Ollama.app/Contents/Resources/ollama"_s, u"/data/Morvane/ollama"_s,
                           u"/opt/homebrew/bin/ollama"_s, u"/usr/local/bin/ollama"_s,
                           home.path(u".local/bin/ollama"_s)}));
}

TEST_F(RuntimeProgramTest, TheFirstThatCanBeRunIsTheProgram)
{
    const QString plain = home.write(u"plain"_s, "no program");
    const QString second = program(u"second"_s);
    const QString third = program(u"third"_s);
    const QString folder = QFileInfo(second).path();
    EXPECT_EQ(binaryPath({home.path(u"missing"_s), plain, folder, second, third}), second);
}

TEST_F(RuntimeProgramTest, WithoutAnyTheFirstPlaceStands)
{
    EXPECT_EQ(binaryPath({home.path(u"one"_s), home.path(u"two"_s)}), home.path(u"one"_s));
    EXPECT_FALSE(isExecutableFile(home.path(u"one"_s)));
    EXPECT_FALSE(isExecutableFile(home.path()));
}

TEST_F(RuntimeProgramTest, TheProgramAsksOurServerWhateverTheUserHasSet)
{
    qputenv("OLLAMA_HOST", "example.org:1");
    const auto environment = runtimeEnvironment(u"http://localhost:11434"_s);
    qunsetenv("OLLAMA_HOST");
    EXPECT_EQ(variables(environment, "OLLAMA_HOST"), QList<QByteArray>({"OLLAMA_HOST=127.0.0.1:11434"}));
    EXPECT_EQ(variables(environment, "HOME").size(), 1);
    EXPECT_TRUE(variables(environment, "OLLAMA_CONTEXT_LENGTH").isEmpty());
}

TEST_F(RuntimeProgramTest, TheServerHasRoomForTheFirstRequest)
{
    const auto environment = serverEnvironment(u"http://127.0.0.1:4000"_s);
    EXPECT_EQ(variables(environment, "OLLAMA_HOST"), QList<QByteArray>({"OLLAMA_HOST=127.0.0.1:4000"}));
    EXPECT_EQ(variables(environment, "OLLAMA_CONTEXT_LENGTH"),
              QList<QByteArray>({"OLLAMA_CONTEXT_LENGTH=16384"}));
}

TEST_F(RuntimeProgramTest, TheArchiveIsThatOfTheProcessor)
{
    EXPECT_EQ(runtimeArchives(u"x86_64"_s),
              QStringList({u"ollama-linux-amd64.tar.zst"_s, u"ollama-linux-amd64.tgz"_s}));
    EXPECT_EQ(runtimeArchives(u"arm64"_s),
              QStringList({u"ollama-linux-arm64.tar.zst"_s, u"ollama-linux-arm64.tgz"_s}));
    EXPECT_EQ(runtimeArchives(u"mips"_s), QStringList());
}

} // namespace
} // namespace morvane
