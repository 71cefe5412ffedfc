#include "store/UserDefaults.h"

#include "support/FileSizeLimit.h"
#include "support/FileSteps.h"
#include "support/LogRecorder.h"
#include "support/TemporaryHome.h"
#include "support/WaitUntil.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>
#include <algorithm>
#include <cerrno>
#include <gtest/gtest.h>
#include <optional>
#include <sys/stat.h>
#include <thread>

namespace morvane {
namespace {

class UserDefaultsTest : public testing::Test {
protected:
    QStringList entries() const
    {
        return QDir(home.path("Morvane")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    TemporaryHome home;
    const QString path = home.path("Morvane/Morvane.conf");
};

TEST_F(UserDefaultsTest, MissingFileHasNoValuesAndIsNotCreated)
{
    UserDefaults defaults(path);
    EXPECT_FALSE(defaults.contains("model"));
    EXPECT_FALSE(defaults.value("model").isValid());
    EXPECT_TRUE(defaults.write());
    EXPECT_FALSE(QFileInfo::exists(path));
    EXPECT_EQ(permissionBits(home.path("Morvane")), 0700U);
}

TEST_F(UserDefaultsTest, WriteHandsTheValuesOverAtOnce)
{
    UserDefaults defaults(path);
    defaults.set("model", "a");
    defaults.set("list", QStringList{"x", "y"});
    EXPECT_TRUE(defaults.write());
    EXPECT_EQ(home.read("Morvane/Morvane.conf"), QByteArray("[General]\nlist=x, y\nmodel=a\n"));
    EXPECT_EQ(permissionBits(path), 0600U);
    EXPECT_EQ(entries(), QStringList{"Morvane.conf"});
}

TEST_F(UserDefaultsTest, WhatWasWrittenIsBroughtToTheDiskSoonAfter)
{
    UserDefaults defaults(path);
    const FileSteps steps;
    defaults.set("apiKey_groq", "secret");
    ASSERT_TRUE(defaults.write());
    struct stat status{};
    ASSERT_EQ(::stat(QFile::encodeName(path).constData(), &status), 0);
    EXPECT_TRUE(waitUntil([&] {
        const auto all = steps.all();
        return std::any_of(all.begin(), all.end(), [&](const FileSteps::Step &step) {
            return step.kind == FileSteps::Step::Kind::synced && step.inode == status.st_ino;
        });
    }));
}

TEST_F(UserDefaultsTest, ADiskThatDoesNotKeepWhatWasWrittenIsTold)
{
    const LogRecorder log;
    {
        const FileSteps steps(EIO);
        UserDefaults defaults(path);
        defaults.set("model", "a");
        ASSERT_TRUE(defaults.write());
    }
    EXPECT_EQ(log.lines(),
              QStringList{"morvane.store: the settings may not outlive a power cut: \"Input/output error\""});
}

TEST_F(UserDefaultsTest, ValuesAreThereAfterTheNextStart)
{
    {
        UserDefaults defaults(path);
        defaults.set("text", "a, \"b\"\n🙂");
        defaults.set("bytes", QByteArray("\x00\xff", 2));
        defaults.set("number", 0.0);
        defaults.set("flag", false);
        defaults.set("one", QStringList{"a,b"});
        defaults.set("none", QStringList{});
        defaults.write();
    }
    UserDefaults defaults(path);
    EXPECT_EQ(defaults.value("text"), QVariant("a, \"b\"\n🙂"));
    EXPECT_EQ(defaults.value("bytes"), QVariant(QByteArray("\x00\xff", 2)));
    EXPECT_TRUE(defaults.contains("number"));
    EXPECT_EQ(defaults.value("number").toDouble(), 0.0);
    EXPECT_TRUE(defaults.contains("flag"));
    EXPECT_FALSE(defaults.value("flag").toBool());
    EXPECT_EQ(defaults.value("one").toStringList(), QStringList{"a,b"});
    EXPECT_TRUE(defaults.value("none").toStringList().isEmpty());
    EXPECT_TRUE(defaults.contains("none"));
}

TEST_F(UserDefaultsTest, ValuesReadTheSameBeforeAndAfterTheyAreWritten)
{
    const QVariantMap values{
        {"a", true}, {"b", 3}, {"c", 0.5}, {"d", QStringList{"x"}}, {"e", QStringList{}}};
    QVariantMap before;
    {
        UserDefaults defaults(path);
        for (auto value = values.cbegin(); value != values.cend(); ++value)
            defaults.set(value.key(), *value);
        for (const QString &key : values.keys())
            before.insert(key, defaults.value(key));
        defaults.write();
    }
    UserDefaults defaults(path);
    for (const QString &key : values.keys())
        EXPECT_EQ(defaults.value(key), before.value(key)) << key.toStdString();
}

TEST_F(UserDefaultsTest, RemovedKeyIsGone)
{
    {
        UserDefaults defaults(path);
        defaults.set("a", "1");
        defaults.set("b", "2");
        defaults.write();
        defaults.remove("a");
        defaults.remove("never");
        EXPECT_FALSE(defaults.contains("a"));
        defaults.write();
    }
    UserDefaults defaults(path);
    EXPECT_FALSE(defaults.contains("a"));
    EXPECT_EQ(defaults.value("b"), QVariant("2"));
}

TEST_F(UserDefaultsTest, NothingIsWrittenWhereNothingChanged)
{
    UserDefaults defaults(path);
    defaults.set("a", "1");
    defaults.write();
    ASSERT_TRUE(QFile::remove(path));
    defaults.set("a", "1");
    defaults.write();
    EXPECT_FALSE(QFileInfo::exists(path));
}

TEST_F(UserDefaultsTest, WiderPermissionsOfOldAreNarrowed)
{
    home.write("Morvane/Morvane.conf", "[General]\na=1\n");
    ASSERT_EQ(::chmod(QFile::encodeName(home.path("Morvane")).constData(), 0755), 0);
    ASSERT_EQ(::chmod(QFile::encodeName(path).constData(), 0644), 0);
    const UserDefaults defaults(path);
    EXPECT_EQ(defaults.value("a"), QVariant("1"));
    EXPECT_EQ(permissionBits(home.path("Morvane")), 0700U);
    EXPECT_EQ(permissionBits(path), 0600U);
}

TEST_F(UserDefaultsTest, ChangeByAnotherProgramIsKept)
{
    UserDefaults defaults(path);
    defaults.set("ours", "1");
    defaults.set("both", "1");
    defaults.set("removed", "1");
    defaults.write();
    home.write("Morvane/Morvane.conf", "[General]\nboth=theirs\nours=1\ntheirs=2\nremoved=1\n");
    defaults.set("both", "ours");
    defaults.remove("removed");
    EXPECT_TRUE(defaults.write());
    EXPECT_EQ(home.read("Morvane/Morvane.conf"), QByteArray("[General]\nboth=ours\nours=1\ntheirs=2\n"));
    EXPECT_EQ(defaults.value("theirs"), QVariant("2"));
}

TEST_F(UserDefaultsTest, TwoProgramsKeepEachOthersKeys)
{
    UserDefaults first(path);
    UserDefaults second(path);
    first.set("first", "1");
    first.write();
    second.set("second", "2");
    second.write();
    first.set("third", "3");
    first.write();
    EXPECT_EQ(home.read("Morvane/Morvane.conf"), QByteArray("[General]\nfirst=1\nsecond=2\nthird=3\n"));
}

TEST_F(UserDefaultsTest, ADamagedFileThatAnotherProgramIsChangingIsLeftToIt)
{
    home.write("Morvane/Morvane.conf", "[General]\nmodel=a\nno key here\n");
    std::optional<DefaultsFile::Lock> theirs = DefaultsFile(path).lock(std::chrono::seconds(1));
    ASSERT_TRUE(theirs->isHeld());
    UserDefaults defaults(path);
    EXPECT_FALSE(QFileInfo::exists(path + ".damaged"));
    EXPECT_EQ(defaults.value("model"), QVariant("a"));
    theirs.reset();
    defaults.set("second", "2");
    EXPECT_TRUE(defaults.write());
    EXPECT_TRUE(QFileInfo::exists(path + ".damaged"));
    EXPECT_EQ(home.read("Morvane/Morvane.conf"), QByteArray("[General]\nmodel=a\nsecond=2\n"));
}

TEST_F(UserDefaultsTest, WhatAnotherProgramMendsMeanwhileIsNotUndone)
{
    home.write("Morvane/Morvane.conf", "[General]\nmodel=a\nno key here\n");
    std::optional<DefaultsFile::Lock> theirs = DefaultsFile(path).lock(std::chrono::seconds(1));
    ASSERT_TRUE(theirs->isHeld());
    UserDefaults defaults(path);
    ASSERT_TRUE(DefaultsFile(path).write({{"model", "b"}}));
    theirs.reset();
    defaults.set("second", "2");
    EXPECT_TRUE(defaults.write());
    EXPECT_EQ(defaults.value("model"), QVariant("b"));
    EXPECT_EQ(home.read("Morvane/Morvane.conf"), QByteArray("[General]\nmodel=b\nsecond=2\n"));
}

TEST_F(UserDefaultsTest, ChangesWaitWhileAnotherProgramChangesTheFile)
{
    UserDefaults defaults(path);
    defaults.set("model", "a");
    {
        const DefaultsFile::Lock theirs = DefaultsFile(path).lock(std::chrono::seconds(1));
        ASSERT_TRUE(theirs.isHeld());
        EXPECT_FALSE(defaults.write());
        EXPECT_FALSE(QFileInfo::exists(path));
        EXPECT_EQ(defaults.value("model"), QVariant("a"));
    }
    EXPECT_TRUE(waitUntil([this] { return home.read("Morvane/Morvane.conf") == "[General]\nmodel=a\n"; }));
}

TEST_F(UserDefaultsTest, KeysOfAnotherThreadSurviveOurWrites)
{
    constexpr int writes = 60;
    std::thread other([this] {
        DefaultsFile file(path);
        for (int count = 1; count <= writes; ++count)
            EXPECT_TRUE(file.update([count](QVariantMap &values) { values.insert("theirs", count); }));
    });
    UserDefaults defaults(path);
    for (int count = 1; count <= writes; ++count) {
        defaults.set("ours", count);
        defaults.write();
    }
    other.join();
    EXPECT_TRUE(waitUntil([&] { return defaults.write(); }));
    const QVariantMap values = DefaultsFile(path).read().values;
    EXPECT_EQ(values.value("ours").toInt(), writes);
    EXPECT_EQ(values.value("theirs").toInt(), writes);
}

TEST_F(UserDefaultsTest, FullDiskKeepsTheOldFileAndTheChangesForTheNextWrite)
{
    UserDefaults defaults(path);
    defaults.set("a", "old");
    defaults.write();
    {
        const FileSizeLimit full(10);
        defaults.set("a", QString(1000, u'x'));
        const LogRecorder log;
        EXPECT_FALSE(defaults.write());
        EXPECT_EQ(log.lines().join(u'\n'),
                  "morvane.base: the settings could not be written: \"File too large\"");
    }
    EXPECT_EQ(home.read("Morvane/Morvane.conf"), QByteArray("[General]\na=old\n"));
    EXPECT_EQ(entries(), QStringList{"Morvane.conf"});
    EXPECT_EQ(defaults.value("a").toString().size(), 1000);
    EXPECT_TRUE(defaults.write());
    EXPECT_EQ(home.read("Morvane/Morvane.conf").size(), 1000 + 13);
}

TEST_F(UserDefaultsTest, FolderThatVanishedIsCreatedAnew)
{
    UserDefaults defaults(path);
    defaults.set("apiKey_groq", "secret");
    EXPECT_TRUE(defaults.write());
    ASSERT_TRUE(QDir(home.path("Morvane")).removeRecursively());
    defaults.set("a", "1");
    EXPECT_TRUE(defaults.write());
    EXPECT_EQ(permissionBits(home.path("Morvane")), 0700U);
    EXPECT_EQ(home.read("Morvane/Morvane.conf"), QByteArray("[General]\na=1\napiKey_groq=secret\n"));
}

TEST_F(UserDefaultsTest, FolderThatCannotBeMadeLeavesTheValuesInMemory)
{
    home.write("file", "x");
    UserDefaults defaults(home.path("file/Morvane.conf"));
    defaults.set("a", "1");
    EXPECT_FALSE(defaults.write());
    EXPECT_EQ(defaults.value("a"), QVariant("1"));
    EXPECT_EQ(home.read("file"), QByteArray("x"));
}

TEST_F(UserDefaultsTest, DamagedFileIsSetAsideAndWhatCanBeReadStays)
{
    const QByteArray damaged = "[General]\nmodel=m\nthis line is nothing\napiKey_groq=secret\n";
    home.write("Morvane/Morvane.conf", damaged);
    UserDefaults defaults(path);
    EXPECT_EQ(defaults.value("model"), QVariant("m"));
    EXPECT_EQ(defaults.value("apiKey_groq"), QVariant("secret"));
    EXPECT_EQ(home.read("Morvane/Morvane.conf.damaged"), damaged);
    EXPECT_EQ(permissionBits(home.path("Morvane/Morvane.conf.damaged")), 0600U);
    EXPECT_TRUE(defaults.write());
    EXPECT_EQ(home.read("Morvane/Morvane.conf"), QByteArray("[General]\napiKey_groq=secret\nmodel=m\n"));
}

TEST_F(UserDefaultsTest, FileOfAnotherKindIsSetAside)
{
    QString asideName = "Morvane/Morvane.conf.damaged";
    for (const QByteArray &foreign : {QByteArray(4096, '\0'), QByteArray("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16),
                                      QByteArray("{\"model\":1}")}) {
        home.write("Morvane/Morvane.conf", foreign);
        UserDefaults defaults(path);
        EXPECT_FALSE(defaults.contains("model"));
        EXPECT_EQ(home.read(asideName), foreign);
        defaults.set("model", "m");
        EXPECT_TRUE(defaults.write());
        EXPECT_EQ(home.read("Morvane/Morvane.conf"), QByteArray("[General]\nmodel=m\n"));
        asideName = asideName.endsWith("-2") ? asideName.replace("-2", "-3") : asideName + "-2";
    }
}

TEST_F(UserDefaultsTest, DamagedFileThatCannotBeSetAsideIsNeverReplaced)
{
    const QString name = "Morvane/" + QString(250, u'm'); // any longer, and no folder takes it
    const QByteArray damaged = "[General]\napiKey_groq=secret\nthis line is nothing\n";
    home.write(name, damaged);
    {
        UserDefaults defaults(home.path(name));
        EXPECT_EQ(defaults.value("apiKey_groq"), QVariant("secret"));
        defaults.set("a", "1");
        EXPECT_FALSE(defaults.write());
        EXPECT_EQ(defaults.value("a"), QVariant("1"));
    }
    EXPECT_EQ(home.read(name), damaged);
}

TEST_F(UserDefaultsTest, EmptyFileHasNothingToSetAside)
{
    home.write("Morvane/Morvane.conf", "");
    UserDefaults defaults(path);
    EXPECT_EQ(entries(), QStringList{"Morvane.conf"});
    defaults.set("a", "1");
    EXPECT_TRUE(defaults.write());
}

TEST_F(UserDefaultsTest, FileThatIsEmptiedOrDamagedMeanwhileCostsNothing)
{
    UserDefaults defaults(path);
    defaults.set("apiKey_groq", "secret");
    EXPECT_TRUE(defaults.write());
    for (const QByteArray &content : {QByteArray(), QByteArray(100, '\0')}) {
        home.write("Morvane/Morvane.conf", content);
        defaults.set("a", QString::number(content.size()));
        EXPECT_TRUE(defaults.write());
        EXPECT_EQ(home.read("Morvane/Morvane.conf"),
                  "[General]\na=" + QByteArray::number(content.size()) + "\napiKey_groq=secret\n");
    }
    EXPECT_EQ(home.read("Morvane/Morvane.conf.damaged"), QByteArray(100, '\0'));
}

TEST_F(UserDefaultsTest, FolderInTheFilesPlaceIsLeftAlone)
{
    ASSERT_TRUE(QDir(home.path()).mkpath("Morvane/Morvane.conf/inside"));
    UserDefaults defaults(path);
    defaults.set("a", "1");
    EXPECT_FALSE(defaults.write());
    EXPECT_TRUE(QFileInfo(home.path("Morvane/Morvane.conf/inside")).isDir());
    EXPECT_EQ(defaults.value("a"), QVariant("1"));
}

TEST_F(UserDefaultsTest, LinkedFileStaysLinked)
{
    home.write("dotfiles/morvane.conf", "[General]\na=1\n");
    ASSERT_TRUE(QDir(home.path()).mkpath("Morvane"));
    ASSERT_TRUE(QFile::link(home.path("dotfiles/morvane.conf"), path));
    UserDefaults defaults(path);
    EXPECT_EQ(defaults.value("a"), QVariant("1"));
    defaults.set("a", "2");
    EXPECT_TRUE(defaults.write());
    EXPECT_TRUE(QFileInfo(path).isSymLink());
    EXPECT_EQ(home.read("dotfiles/morvane.conf"), QByteArray("[General]\na=2\n"));
}

TEST_F(UserDefaultsTest, PipeInTheFilesPlaceHangsNothing)
{
    ASSERT_TRUE(QDir(home.path()).mkpath("Morvane"));
    ASSERT_EQ(::mkfifo(QFile::encodeName(path).constData(), 0644), 0);
    UserDefaults defaults(path);
    defaults.set("a", "1");
    EXPECT_FALSE(defaults.write());
    EXPECT_EQ(defaults.value("a"), QVariant("1"));
    EXPECT_EQ(permissionBits(path), 0644U);
}

TEST_F(UserDefaultsTest, WhatACrashedWriteLeftIsRemovedAtTheNextStart)
{
    home.write("Morvane/.morvane-write-abcdef", "[General]\napiKey_groq=secret\n");
    const UserDefaults defaults(path);
    EXPECT_TRUE(entries().isEmpty());
}

} // namespace
} // namespace morvane
