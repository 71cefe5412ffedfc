#include "net/FileDownload.h"

#include "integration/net/NetFixture.h"
#include "net/DownloadError.h"
#include "net/PartialFile.h"
#include "support/DownloadServer.h"
#include "support/FileSizeLimit.h"
#include "support/TemporaryHome.h"
#include "support/WaitUntil.h"

#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using Fault = DownloadServer::Fault;

class FileDownloadTest : public NetTest {
protected:
    FileDownloadTest() { server.setFile(u"/file"_s, {content}); }

    QString path() const { return home.path(u"file.part"_s); }

    DownloadOrder order(const QUrl &url)
    {
        return {url, path(), ampleBytes, [this](qint64 received, std::optional<qint64> total) {
                    progress.append(received);
                    told = total;
                }};
    }
    void download() { runTask(scheduler, downloadFile(&client, order(server.url(u"/file"_s)))); }

    /// How the download ends: a kind of either error, or nothing.
    std::optional<DownloadError::Kind> refusal()
    {
        try {
            download();
        } catch (const DownloadError &error) {
            return error.kind();
        }
        return std::nullopt;
    }
    bool isLost()
    {
        try {
            download();
        } catch (const TransportError &error) {
            return error.kind() == TransportError::Kind::networkConnectionLost;
        }
        return false;
    }
    /// Ends a download in its middle.
    void breakOff(qint64 bytes)
    {
        server.setFaults({{Fault::Kind::cutOff, bytes}});
        ASSERT_TRUE(isLost());
        ASSERT_EQ(QFileInfo(path()).size(), bytes);
        server.setFaults({});
    }
    QByteArray downloaded() const { return home.read(u"file.part"_s); }
    QByteArray asked(int request, const char *header) const
    {
        return server.requests().value(request).headers.value(header).value_or(QByteArray("(none)"));
    }

    static QByteArray noise(qsizetype size)
    {
        QByteArray bytes(size, 0);
        quint32 state = 7;
        for (char &byte : bytes)
            byte = static_cast<char>((state = state * 1664525 + 1013904223) >> 24);
        return bytes;
    }

    const QByteArray content = noise(5'000'000);
    TemporaryHome home;
    DownloadServer server;
    QList<qint64> progress;
    std::optional<qint64> told;
};

TEST_F(FileDownloadTest, TheWholeFileComesAndNobodyElseMayReadIt)
{
    download();
    EXPECT_EQ(downloaded(), content);
    EXPECT_EQ(permissionBits(path()), 0600U);
    EXPECT_EQ(progress.constLast(), content.size());
    EXPECT_TRUE(std::is_sorted(progress.begin(), progress.end()));
    EXPECT_EQ(told, content.size());
    EXPECT_EQ(asked(0, "Accept-Encoding"), "identity");
    EXPECT_EQ(asked(0, "Range"), "(none)");
}

TEST_F(FileDownloadTest, ABrokenDownloadIsGoneOnWith)
{
    breakOff(2'000'000);
    progress.clear();
    download();
    EXPECT_EQ(downloaded(), content);
    EXPECT_EQ(asked(1, "Range"), "bytes=2000000-");
    EXPECT_EQ(asked(1, "If-Range"), "\"v1\"");
    EXPECT_GT(progress.constFirst(), 2'000'000);
    EXPECT_EQ(told, content.size());
}

TEST_F(FileDownloadTest, ADateIsAValidatorToo)
{
    server.setFile(u"/file"_s, {content, {}, "Mon, 01 Jan 2024 00:00:00 GMT"});
    breakOff(1000);
    download();
    EXPECT_EQ(downloaded(), content);
    EXPECT_EQ(asked(1, "If-Range"), "Mon, 01 Jan 2024 00:00:00 GMT");
}

TEST_F(FileDownloadTest, AWeakTagIsNoValidator)
{
    server.setFile(u"/file"_s, {content, "W/\"v1\""});
    breakOff(1000);
    EXPECT_FALSE(PartialFile::canBeResumed(path()));
    download();
    EXPECT_EQ(downloaded(), content);
    EXPECT_EQ(asked(1, "Range"), "(none)");
}

TEST_F(FileDownloadTest, AFileThatHasChangedComesAnew)
{
    breakOff(2'000'000);
    const QByteArray changed = noise(3'000'000).toBase64();
    server.setFile(u"/file"_s, {changed, "\"v2\""});
    download();
    EXPECT_EQ(downloaded(), changed);
    EXPECT_EQ(asked(1, "If-Range"), "\"v1\"");
}

TEST_F(FileDownloadTest, AChangedShorterFileComesAnew)
{
    breakOff(2'000'000);
    server.setFile(u"/file"_s, {"short", "\"v2\""});
    server.setFaults({{Fault::Kind::otherTag}}); // heeds the range, but not the validator
    download();
    EXPECT_EQ(downloaded(), "short");
}

TEST_F(FileDownloadTest, APartOfAnotherFileIsNotTaken)
{
    breakOff(2'000'000);
    const QByteArray changed = QByteArray(content.size(), 'x'); // of the same size
    server.setFile(u"/file"_s, {changed, "\"v2\""});
    server.setFaults({{Fault::Kind::otherTag}});
    download();
    EXPECT_EQ(downloaded(), changed);
}

TEST_F(FileDownloadTest, APartFromAnotherPlaceIsNotTaken)
{
    breakOff(2'000'000);
    server.setFaults({{Fault::Kind::otherRange}});
    download();
    EXPECT_EQ(downloaded(), content);
}

TEST_F(FileDownloadTest, AServerWithoutRangesSendsTheWholeFileAgain)
{
    breakOff(2'000'000);
    server.setFaults({{Fault::Kind::wholeInstead}});
    download();
    EXPECT_EQ(downloaded(), content);
}

TEST_F(FileDownloadTest, ACompleteFileIsComparedAndNotBroughtAgain)
{
    download();
    // The server counts what it has sent a moment after it is there.
    ASSERT_TRUE(waitUntil([this] { return server.server().sentBytes() > content.size(); }));
    const qint64 sent = server.server().sentBytes();
    download();
    EXPECT_EQ(downloaded(), content);
    EXPECT_EQ(asked(1, "Range"), "bytes=4999999-");
    EXPECT_LT(server.server().sentBytes() - sent, 1000);
}

TEST_F(FileDownloadTest, TheRecordOfAnotherAddressIsOfNoUse)
{
    breakOff(2'000'000);
    server.setFile(u"/other"_s, {"other"});
    runTask(scheduler, downloadFile(&client, order(server.url(u"/other"_s))));
    EXPECT_EQ(downloaded(), "other");
    EXPECT_EQ(asked(1, "Range"), "(none)");
}

TEST_F(FileDownloadTest, AFileWithoutARecordIsNotTrusted)
{
    for (const QByteArray &record : {QByteArray("{"), QByteArray("{\"url\":1}"), QByteArray()}) {
        home.write(u"file.part"_s, "rubbish");
        home.write(u"file.part.json"_s, record);
        download();
        EXPECT_EQ(downloaded(), content);
    }
}

TEST_F(FileDownloadTest, WithoutALengthTheEndIsTheEnd)
{
    server.setFaults({{Fault::Kind::withoutLength}});
    download();
    EXPECT_EQ(downloaded(), content);
    EXPECT_FALSE(told);
}

TEST_F(FileDownloadTest, WhatIsNotTheFileIsRefused)
{
    for (const int status : {404, 403, 500, 204}) {
        server.setFaults({{Fault::Kind::status, status}});
        EXPECT_EQ(refusal(), DownloadError::Kind::refused) << status;
    }
    server.setFaults({{Fault::Kind::encoded}});
    EXPECT_EQ(refusal(), DownloadError::Kind::unusable);
}

TEST_F(FileDownloadTest, ARefusalKeepsWhatIsThere)
{
    breakOff(2'000'000);
    server.setFaults({{Fault::Kind::status, 503}});
    EXPECT_EQ(refusal(), DownloadError::Kind::refused);
    download();
    EXPECT_EQ(asked(2, "Range"), "bytes=2000000-");
    EXPECT_EQ(downloaded(), content);
}

TEST_F(FileDownloadTest, TooLargeAFileIsNotBegun)
{
    DownloadOrder small = order(server.url(u"/file"_s));
    small.maximumBytes = content.size() - 1;
    for (const Fault::Kind kind : {Fault::Kind::none, Fault::Kind::withoutLength}) {
        server.setFaults({{kind}});
        EXPECT_THROW(runTask(scheduler, downloadFile(&client, small)), DownloadError);
        EXPECT_LT(QFileInfo(path()).size(), content.size());
    }
}

TEST_F(FileDownloadTest, RedirectsKeepTheRange)
{
    breakOff(2'000'000);
    DownloadServer mirror;
    mirror.setFile(u"/file"_s, {content});
    server.setFaults({{Fault::Kind::redirect, 0, mirror.url(u"/file"_s).toEncoded()}});
    download();
    EXPECT_EQ(downloaded(), content);
    EXPECT_EQ(mirror.requests().value(0).headers.value("Range"), "bytes=2000000-");
    EXPECT_EQ(mirror.requests().value(0).headers.value("If-Range"), "\"v1\"");
}

TEST_F(FileDownloadTest, CancellingKeepsWhatIsThere)
{
    server.setFaults({{Fault::Kind::stall, 1'500'000}});
    auto task = scheduler.spawn(downloadFile(&client, order(server.url(u"/file"_s))));
    ASSERT_TRUE(waitUntil([this] { return !progress.isEmpty() && progress.constLast() == 1'500'000; }));
    task.cancel();
    ASSERT_TRUE(waitUntil([&task] { return task.done(); }));
    EXPECT_THROW(task.result(), Cancelled);
    ASSERT_TRUE(waitUntil([this] { return server.server().connectionsClosedByPeer() == 1; }));
    download();
    EXPECT_EQ(asked(1, "Range"), "bytes=1500000-");
    EXPECT_EQ(downloaded(), content);
}

TEST_F(FileDownloadTest, AFullDiskIsTold)
{
    const FileSizeLimit limit(1'000'000);
    EXPECT_EQ(refusal(), DownloadError::Kind::diskFull);
}

TEST_F(FileDownloadTest, WhatIsNoFileIsNotWrittenTo)
{
    const QString target = home.write(u"target"_s, "precious");
    ASSERT_TRUE(QFile::link(target, path()));
    EXPECT_EQ(refusal(), DownloadError::Kind::disk);
    EXPECT_EQ(home.read(u"target"_s), "precious");
}

TEST_F(FileDownloadTest, RemovingTakesTheRecordAlong)
{
    breakOff(1000);
    EXPECT_TRUE(PartialFile::canBeResumed(path()));
    PartialFile::remove(path());
    EXPECT_FALSE(QFileInfo::exists(path()));
    EXPECT_FALSE(PartialFile::canBeResumed(path()));
}

} // namespace
} // namespace morvane
