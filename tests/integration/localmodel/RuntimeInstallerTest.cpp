#include "localmodel/RuntimeInstaller.h"
#include "integration/localmodel/RuntimeFixture.h"
#include "support/FakeClock.h"
#include "support/HeldPool.h"
#include "support/SmallVolume.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

using namespace std::chrono_literals;
using testing::HasSubstr;

namespace morvane {
namespace {

using Fault = DownloadServer::Fault;

constexpr auto notExtracted = "The Ollama download could not be extracted. Please try again.";

class RuntimeInstallerTest : public RuntimeTest {
protected:
    /// As a new start of Morvane has it.
    QString install()
    {
        RuntimeInstaller installer(http, downloads.origin(), data());
        return runTask(scheduler, installer.install(recording()));
    }
    QString installFailure()
    {
        RuntimeInstaller installer(http, downloads.origin(), data());
        return failureOf(installer.install(recording()));
    }
    QStringList remains() const
    {
        return QDir(data()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System);
    }
    void offer(const QByteArray &bytes) { downloads.setFile(archiveName(), {bytes}); }
    QByteArray installed() const { return contentOf(data() + u"/ollama"_s); }

    /// Bytes that do not shrink when they are compressed.
    static QByteArray noise(qsizetype size)
    {
        QByteArray bytes(size, 0);
        quint32 state = 3;
        for (char &byte : bytes)
            byte = static_cast<char>((state = state * 1664525 + 1013904223) >> 24);
        return bytes;
    }
};

TEST_F(RuntimeInstallerTest, ABrokenConnectionIsGoneOnWith)
{
    offer(sampleRuntime(noise(3'000'000)).bytes());
    downloads.setFaults({{Fault::Kind::cutOff, 1'000'000}, {Fault::Kind::cutOff, 1'000'000}});
    EXPECT_EQ(install(), data() + u"/ollama"_s);
    EXPECT_EQ(installed(), noise(3'000'000));
    ASSERT_EQ(downloads.requests().size(), 3);
    EXPECT_EQ(downloads.requests().at(1).headers.value("Range"), "bytes=1000000-");
    EXPECT_EQ(downloads.requests().at(2).headers.value("Range"), "bytes=2000000-");
}

TEST_F(RuntimeInstallerTest, AfterThreeAttemptsThePartIsKeptForTheNextTime)
{
    offer(sampleRuntime(noise(3'000'000)).bytes());
    downloads.setFaults(QList<Fault>(3, {Fault::Kind::cutOff, 500'000}));
    EXPECT_EQ(installFailure(), u"Ollama could not be downloaded. The connection was lost."_s);
    EXPECT_EQ(downloads.requests().size(), 3);
    EXPECT_EQ(install(), data() + u"/ollama"_s);
    EXPECT_EQ(downloads.requests().at(3).headers.value("Range"), "bytes=1500000-");
    EXPECT_EQ(installed(), noise(3'000'000));
}

TEST_F(RuntimeInstallerTest, WhatCannotBeGoneOnWithIsNotTriedAgain)
{
    downloads.setFile(archiveName(), {sampleRuntime(noise(1'000'000)).bytes(), {}});
    downloads.setFaults({{Fault::Kind::cutOff, 500'000}});
    EXPECT_EQ(installFailure(), u"Ollama could not be downloaded. The connection was lost."_s);
    EXPECT_EQ(downloads.requests().size(), 1);
}

TEST_F(RuntimeInstallerTest, AFileThatChangedMeanwhileComesAnew)
{
    offer(sampleRuntime(noise(3'000'000)).bytes());
    downloads.setFaults(QList<Fault>(3, {Fault::Kind::cutOff, 500'000}));
    installFailure();
    downloads.setFile(archiveName(), {sampleRuntime("newer").bytes(), "\"v2\""});
    install();
    EXPECT_EQ(installed(), "newer");
}

TEST_F(RuntimeInstallerTest, TheOlderNameIsTriedWhereTheNewerIsMissing)
{
    downloads.setFile(olderArchiveName(), {sampleRuntime("older").bytes(SampleArchive::Compression::gzip)});
    install();
    EXPECT_EQ(installed(), "older");
    EXPECT_EQ(downloads.requests().size(), 2);
    EXPECT_EQ(remains(), QStringList({u"ollama"_s, u"ollama-runtime"_s}));
}

TEST_F(RuntimeInstallerTest, AMissingFileIsTold)
{
    EXPECT_EQ(installFailure(),
              u"Ollama could not be downloaded. The server answered with HTTP status 404."_s);
    EXPECT_EQ(downloads.requests().size(), 2);
}

TEST_F(RuntimeInstallerTest, CancellingADownloadKeepsThePart)
{
    offer(sampleRuntime(noise(3'000'000)).bytes());
    downloads.setFaults({{Fault::Kind::stall, 1'000'000}});
    RuntimeInstaller installer(http, downloads.origin(), data());
    auto task = scheduler.spawn(installer.install(recording()));
    ASSERT_TRUE(waitUntil([this] {
        return QFileInfo(data() + archiveName().mid(int(qstrlen("/download"))) + u".part"_s).size() ==
               1'000'000;
    }));
    const QString line = u"Downloading Ollama… 1 MB of 3 MB (33%)"_s;
    ASSERT_TRUE(waitUntil([&] { return labels().contains(line); }));
    EXPECT_NEAR(reports.constLast().fraction.value_or(0), 0.33, 0.01);
    task.cancel();
    ASSERT_TRUE(waitUntil([&task] { return task.done(); }));
    EXPECT_THROW(task.result(), Cancelled);
    install();
    EXPECT_EQ(downloads.requests().at(1).headers.value("Range"), "bytes=1000000-");
    EXPECT_EQ(installed(), noise(3'000'000));
}

TEST_F(RuntimeInstallerTest, CancellingTheUnpackingKeepsTheArchiveAndNothingElse)
{
    offer(sampleRuntime(noise(3'000'000)).bytes());
    std::optional<HeldPool> busyThreads;
    RuntimeInstaller installer(http, downloads.origin(), data());
    auto task =
        scheduler.spawn(installer.install([&busyThreads](const QString &label, std::optional<double>) {
            if (label == u"Installing Ollama…"_s)
                busyThreads.emplace();
        }));
    ASSERT_TRUE(waitUntil([&busyThreads] { return busyThreads.has_value(); }));
    task.cancel();
    busyThreads.reset();
    ASSERT_TRUE(waitUntil([&task] { return task.done(); }));
    EXPECT_THROW(task.result(), Cancelled);
    const QString archive = QFileInfo(archiveName()).fileName() + u".part"_s;
    EXPECT_TRUE(remains().contains(archive));
    EXPECT_FALSE(remains().contains(u"ollama"_s));
    install();
    EXPECT_EQ(installed(), noise(3'000'000));
    EXPECT_EQ(downloads.requests().size(), 2);
    EXPECT_TRUE(downloads.requests().at(1).headers.value("Range").has_value());
}

TEST_F(RuntimeInstallerTest, BetweenTwoAttemptsThereIsASecond)
{
    offer(sampleRuntime(noise(1'000'000)).bytes());
    downloads.setFaults({{Fault::Kind::cutOff, 500'000}});
    FakeClock fake;
    Scheduler own(fake);
    RuntimeInstaller installer(http, downloads.origin(), data());
    auto task = own.spawn(installer.install(recording()));
    const auto waits = [&fake] {
        return std::ranges::count(fake.requestedDelays(), Clock::Duration(1s)) == 1;
    };
    ASSERT_TRUE(waitUntil(waits));
    EXPECT_EQ(downloads.requests().size(), 1);
    fake.advance(1s);
    ASSERT_TRUE(waitUntil([&task] { return task.done(); }));
    EXPECT_EQ(downloads.requests().size(), 2);
    own.shutdown(1s);
}

TEST_F(RuntimeInstallerTest, WhatStandsInTheWayIsToldInTheSystemsWords)
{
    const QString part = data() + u'/' + QFileInfo(archiveName()).fileName() + u".part"_s;
    ASSERT_TRUE(QDir().mkpath(part));
    offer(sampleRuntime("new").bytes());
    EXPECT_EQ(installFailure(), u"Ollama could not be installed. Is a directory"_s);
    ASSERT_TRUE(QDir().rmdir(part));
    ASSERT_TRUE(QDir().mkpath(data() + u"/ollama"_s));
    EXPECT_EQ(installFailure(), u"Ollama could not be installed. Is a directory"_s);
    EXPECT_TRUE(QFileInfo::exists(part)) << "the archive is no worse for it";
    ASSERT_TRUE(QDir().rmdir(data() + u"/ollama"_s));
    install();
    EXPECT_EQ(installed(), "new");
    RuntimeInstaller elsewhere(http, downloads.origin(), data() + u"/ollama/below a file"_s);
    EXPECT_THAT(failureOf(elsewhere.install(recording())).toStdString(),
                testing::StartsWith("Ollama could not be installed. "));
}

TEST_F(RuntimeInstallerTest, AnArchiveThatIsTooLargeIsNotBegun)
{
    RawHttpServer endless(RawHttpServer::answering(
        [](const RawHttpRequest &) { return rawHttpHead(200, {{"Content-Length", "8000000001"}}); }));
    RuntimeInstaller installer(http, u"http://127.0.0.1:%1"_s.arg(endless.port()), data());
    EXPECT_EQ(failureOf(installer.install(recording())),
              u"Ollama could not be downloaded. The server's answer could not be used."_s);
}

TEST_F(RuntimeInstallerTest, HostileAndBrokenArchivesLeaveNothing)
{
    using Kind = SampleArchive::Kind;
    const QByteArray good = sampleRuntime(noise(100'000)).bytes();
    const QList<QByteArray> archives{
        "<html>maintenance</html>",
        good.first(good.size() / 2),
        SampleArchive().file("README", "no program").bytes(),
        SampleArchive().file("bin/ollama", "not executable", 0644).bytes(),
        SampleArchive().add(Kind::folder, "bin/ollama").bytes(),
        SampleArchive().file("x", "x", 0755).add(Kind::symbolicLink, "bin/ollama", "../x").bytes(),
        sampleRuntime("x").file("../../stranger", "x").bytes(),
        sampleRuntime("x").file("/tmp/c-stranger", "x").bytes(),
        sampleRuntime("x").add(Kind::symbolicLink, "lib/out", "../../..").bytes(),
        sampleRuntime("x").add(Kind::device, "lib/null").bytes(),
    };
    int version = 0;
    for (const QByteArray &archive : archives) {
        downloads.setFile(archiveName(), {archive, "\"" + QByteArray::number(++version) + "\""});
        EXPECT_EQ(installFailure(), QString::fromLatin1(notExtracted)) << version;
        EXPECT_EQ(remains(), QStringList()) << version;
    }
    EXPECT_FALSE(QFileInfo::exists(home.path(u"stranger"_s)));
}

TEST_F(RuntimeInstallerTest, ANewInstallationTakesTheOldOnesPlace)
{
    offer(sampleRuntime("old").file("lib/ollama/only-old", "x").bytes());
    install();
    downloads.setFile(archiveName(), {sampleRuntime("new").bytes(), "\"v2\""});
    install();
    EXPECT_EQ(installed(), "new");
    EXPECT_FALSE(QFileInfo::exists(data() + u"/ollama-runtime/lib/ollama/only-old"_s));
    EXPECT_EQ(remains(), QStringList({u"ollama"_s, u"ollama-runtime"_s}));
}

TEST_F(RuntimeInstallerTest, AFailedInstallationLeavesTheOldOne)
{
    offer(sampleRuntime("old").bytes());
    install();
    downloads.setFile(archiveName(), {"rubbish", "\"v2\""});
    EXPECT_EQ(installFailure(), QString::fromLatin1(notExtracted));
    EXPECT_EQ(installed(), "old");
}

TEST_F(RuntimeInstallerTest, APlainProgramInThePlaceGivesWay)
{
    QFile file(data() + u"/ollama"_s);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("an old copy");
    file.close();
    offer(sampleRuntime("new").bytes());
    install();
    EXPECT_EQ(installed(), "new");
}

TEST_F(RuntimeInstallerTest, WhatAKilledInstallationLeftIsRemoved)
{
    QDir().mkpath(data() + u"/ollama-install-1234/bin"_s);
    ASSERT_TRUE(QFile::link(u"nowhere"_s, data() + u"/ollama-runtime-link"_s));
    offer(sampleRuntime("new").bytes());
    install();
    EXPECT_EQ(remains(), QStringList({u"ollama"_s, u"ollama-runtime"_s}));
}

TEST_F(RuntimeInstallerTest, TheFolderIsTheUsersAlone)
{
    offer(sampleRuntime("new").bytes());
    install();
    EXPECT_EQ(permissionBits(data()), 0700U);
}

TEST_F(RuntimeInstallerTest, AFullDiskIsToldAndEverythingRemoved)
{
    const SmallVolume volume(data(), 2 * 1024 * 1024);
    ASSERT_TRUE(volume.isMounted());
    const QString full =
        u"The disk became full, so Ollama could not be installed. Free some space and try again."_s;
    offer(sampleRuntime(noise(3'000'000)).bytes()); // the archive itself is too large
    EXPECT_EQ(installFailure(), full);
    EXPECT_EQ(remains(), QStringList());
    downloads.setFile(archiveName(), {sampleRuntime(QByteArray(8'000'000, 'x')).bytes(), "\"v2\""});
    EXPECT_EQ(installFailure(), full);
    EXPECT_EQ(remains(), QStringList());
}

TEST_F(RuntimeInstallerTest, HoweverManyPiecesComeWithinAMomentTheyAreToldOnce)
{
    offer(sampleRuntime(noise(20'000'000)).bytes());
    FakeClock still;
    Scheduler other(still);
    RuntimeInstaller installer(http, downloads.origin(), data());
    runTask(other, installer.install(recording()));
    ASSERT_EQ(reports.size(), 2);
    EXPECT_TRUE(reports.constFirst().label.startsWith(u"Downloading Ollama… "_s));
    EXPECT_EQ(reports.constLast().label, u"Installing Ollama…"_s);
}

} // namespace
} // namespace morvane
