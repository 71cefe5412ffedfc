#include "archive/UnpackArchive.h"

#include "support/FileSizeLimit.h"
#include "support/SampleArchive.h"
#include "support/TemporaryHome.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using Kind = SampleArchive::Kind;
using Compression = SampleArchive::Compression;
using Failure = UnpackError::Kind;

class UnpackArchiveTest : public testing::Test {
protected:
    UnpackArchiveTest() { QDir().mkpath(folder()); }

    QString folder() const { return home.path(u"out"_s); }
    QString unpacked(const QString &name) const { return folder() + u'/' + name; }

    UnpackOrder orderFor(const QByteArray &bytes)
    {
        return {home.write(u"archive"_s, bytes), folder(), 10'000'000, 100};
    }
    std::expected<void, UnpackError> unpack(const QByteArray &bytes)
    {
        return unpackArchive(orderFor(bytes));
    }
    std::expected<void, UnpackError> unpack(const SampleArchive &archive) { return unpack(archive.bytes()); }

    static std::optional<Failure> failureOf(const std::expected<void, UnpackError> &result)
    {
        return result ? std::nullopt : std::optional(result.error().kind);
    }
    /// All that lies beside the folder, so that what an archive puts there is noticed.
    QStringList outside() const
    {
        return QDir(home.path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }

    TemporaryHome home;
};

TEST_F(UnpackArchiveTest, FilesFoldersAndLinksComeOut)
{
    for (const Compression compression : {Compression::gzip, Compression::zstandard, Compression::none}) {
        std::filesystem::remove_all(folder().toStdString());
        QDir().mkpath(folder());
        ASSERT_TRUE(unpack(sampleRuntime("program").bytes(compression)));
        EXPECT_EQ(home.read(u"out/bin/ollama"_s), "program");
        EXPECT_TRUE(QFileInfo(unpacked(u"bin/ollama"_s)).isExecutable());
        EXPECT_EQ(permissionBits(unpacked(u"lib/ollama/libggml.so.1"_s)), 0644U);
        EXPECT_EQ(home.read(u"out/lib/ollama/libggml.so"_s), "a library");
    }
}

TEST_F(UnpackArchiveTest, LargeFilesAndEmptyOnesAreWhole)
{
    QByteArray large(3'000'000, 'x');
    for (qsizetype at = 0; at < large.size(); at += 997)
        large[at] = static_cast<char>(at);
    ASSERT_TRUE(unpack(SampleArchive().file("large", large).file("empty", {})));
    EXPECT_EQ(home.read(u"out/large"_s), large);
    EXPECT_EQ(QFileInfo(unpacked(u"empty"_s)).size(), 0);
    EXPECT_TRUE(QFileInfo::exists(unpacked(u"empty"_s)));
}

TEST_F(UnpackArchiveTest, HardLinksWithinTheTreeAreMade)
{
    ASSERT_TRUE(unpack(SampleArchive().file("a/one", "content").add(Kind::hardLink, "b/two", "a/one")));
    EXPECT_EQ(home.read(u"out/b/two"_s), "content");
}

TEST_F(UnpackArchiveTest, NothingIsSetUidAndNobodyElseMayWrite)
{
    ASSERT_TRUE(unpack(SampleArchive().file("program", "x", 06777)));
    struct stat status{};
    ASSERT_EQ(::stat(unpacked(u"program"_s).toLocal8Bit().constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 07022U, 0U);
}

struct Hostile {
    const char *what;
    SampleArchive archive;
};

TEST_F(UnpackArchiveTest, WhatNoHonestArchiveHoldsFailsTheWhole)
{
    const QByteArray home_ = home.path(u"stranger"_s).toUtf8();
    const QList<Hostile> hostile{
        {"absolute name", SampleArchive().file(home_, "x")},
        {"name that goes up", SampleArchive().file("../stranger", "x")},
        {"name that goes down and up", SampleArchive().file("a/../../stranger", "x")},
        {"absolute link", SampleArchive().add(Kind::symbolicLink, "link", "/etc")},
        {"link that points out", SampleArchive().add(Kind::symbolicLink, "link", "../..")},
        {"link without a target", SampleArchive().add(Kind::symbolicLink, "link", "")},
        {"file through a link", SampleArchive().add(Kind::symbolicLink, "link", "a").file("link/x", "x")},
        {"folder through a link",
         SampleArchive().file("a/x", "x").add(Kind::symbolicLink, "link", "a").add(Kind::folder, "link/b")},
        {"link in a file's place", SampleArchive().file("x", "x").add(Kind::symbolicLink, "x", "y")},
        {"file in a link's place", SampleArchive().add(Kind::symbolicLink, "x", "y").file("x", "x")},
        {"the same file twice", SampleArchive().file("x", "1").file("x", "2")},
        {"file in a folder's place", SampleArchive().file("x/y", "1").file("x", "2")},
        {"hard link to what is outside", SampleArchive().add(Kind::hardLink, "x", "../stranger")},
        {"hard link to an absolute place", SampleArchive().add(Kind::hardLink, "x", "/etc/passwd")},
        {"hard link to nothing", SampleArchive().add(Kind::hardLink, "x", "y")},
        {"hard link to a link", SampleArchive()
                                    .file("y", "y")
                                    .add(Kind::symbolicLink, "link", "y")
                                    .add(Kind::hardLink, "x", "link")},
        {"device", SampleArchive().add(Kind::device, "null")},
        {"pipe", SampleArchive().add(Kind::fifo, "pipe")},
        {"links that lead out together", SampleArchive()
                                             .file("p/q/r/x", "x")
                                             .add(Kind::symbolicLink, "p/q/r/up", "../../..")
                                             .add(Kind::symbolicLink, "out", "p/q/r/up/..")},
    };
    const QStringList before = outside() + QStringList(u"archive"_s);
    for (const Hostile &one : hostile) {
        std::filesystem::remove_all(folder().toStdString());
        QDir().mkpath(folder());
        EXPECT_EQ(failureOf(unpack(one.archive)), Failure::hostile) << one.what;
        for (const QString &name : outside())
            EXPECT_TRUE(before.contains(name)) << one.what << ": " << name.toStdString();
    }
}

TEST_F(UnpackArchiveTest, AFolderThatIsALinkItselfIsFine)
{
    ASSERT_TRUE(QFile::link(folder(), home.path(u"link"_s)));
    UnpackOrder order = orderFor(sampleRuntime("program").bytes());
    order.folder = home.path(u"link"_s);
    EXPECT_TRUE(unpackArchive(order));
    EXPECT_EQ(home.read(u"out/lib/ollama/libggml.so"_s), "a library");
}

TEST_F(UnpackArchiveTest, WhatIsNoArchiveIsDamaged)
{
    for (const QByteArray &bytes :
         {QByteArray(), QByteArray("<html>not found</html>"), QByteArray(5000, 'x'), SampleArchive().bytes()})
        EXPECT_EQ(failureOf(unpack(bytes)), Failure::damaged)
            << bytes.first(std::min<qsizetype>(bytes.size(), 20)).toStdString();
}

TEST_F(UnpackArchiveTest, AnArchiveThatIsCutOffAnywhereIsDamaged)
{
    QByteArray noise(200'000, 0);
    quint32 state = 1;
    for (char &byte : noise)
        byte = static_cast<char>((state = state * 1664525 + 1013904223) >> 24);
    for (const Compression compression : {Compression::gzip, Compression::zstandard}) {
        const QByteArray whole = SampleArchive().file("noise", noise).bytes(compression);
        for (const qsizetype length : {qsizetype(1), qsizetype(20), whole.size() / 2, whole.size() - 5000}) {
            std::filesystem::remove_all(folder().toStdString());
            QDir().mkpath(folder());
            EXPECT_EQ(failureOf(unpack(whole.first(length))), Failure::damaged) << length;
        }
    }
}

TEST_F(UnpackArchiveTest, ABrokenByteIsNoticed)
{
    QByteArray bytes = SampleArchive().file("x", QByteArray(100'000, 'x')).bytes();
    bytes[bytes.size() / 2] = static_cast<char>(bytes[bytes.size() / 2] ^ 0x5a);
    EXPECT_EQ(failureOf(unpack(bytes)), Failure::damaged);
}

TEST_F(UnpackArchiveTest, BytesAndEntriesAreLimited)
{
    UnpackOrder order = orderFor(SampleArchive().file("a", QByteArray(1000, 'x')).file("b", "y").bytes());
    order.maximumBytes = 1001;
    order.maximumEntries = 2;
    EXPECT_TRUE(unpackArchive(order));
    for (const auto &[bytes, entries] : {std::pair<qint64, qint64>{1000, 2}, {1001, 1}}) {
        std::filesystem::remove_all(folder().toStdString());
        QDir().mkpath(folder());
        order.maximumBytes = bytes;
        order.maximumEntries = entries;
        EXPECT_EQ(failureOf(unpackArchive(order)), Failure::tooLarge);
    }
}

TEST_F(UnpackArchiveTest, WhoeverStopsItEndsIt)
{
    UnpackOrder order = orderFor(SampleArchive().file("x", "x").bytes());
    order.stop = std::make_shared<std::atomic<bool>>(true);
    EXPECT_EQ(failureOf(unpackArchive(order)), Failure::stopped);
}

TEST_F(UnpackArchiveTest, AFullDiskIsTold)
{
    const UnpackOrder order = orderFor(SampleArchive().file("x", QByteArray(2'000'000, 'x')).bytes());
    const FileSizeLimit limit(1'000'000);
    EXPECT_EQ(failureOf(unpackArchive(order)), Failure::diskFull);
}

} // namespace
} // namespace morvane
