#include "async/SystemClock.h"
#include "net/HttpClient.h"
#include "support/DownloadServer.h"
#include "support/RunTask.h"
#include "support/TemporaryHome.h"
#include "support/TlsServer.h"
#include "update/UpdateChecker.h"
#include "update/UpdateCheckerError.h"
#include "update/UpdateDMGDownloader.h"

#include <QFileInfo>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

using namespace std::chrono_literals;

namespace morvane {
namespace {

/// An encrypted host, and another that is not.
class EncryptedUpdatesTest : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(certificate.isMade());
        ASSERT_TRUE(host.isRunning());
    }
    ~EncryptedUpdatesTest() override { scheduler.shutdown(5s); }

    QString origin() const { return host.url(u""_s).toString(QUrl::RemovePath); }
    static HttpClientOptions trusting(const TestCertificate &certificate)
    {
        HttpClientOptions options;
        options.trustedCertificates = certificate.certificateFile();
        return options;
    }
    static QByteArray manifest()
    {
        return R"({"version": "1.3", "build": 7, "date": "today", "dmg": "https://updates.example/image",
                   "sha256": "ab", "notes": []})";
    }
    /// Sends who asks for `file` to `path` of the host without encryption.
    void leadAway(const QString &file, const QString &path)
    {
        host.addFile(file, rawHttpResponse(302, "elsewhere", {{"Location", plain.url(path).toEncoded()}}));
    }

    TemporaryHome home;
    SystemClock clock;
    Scheduler scheduler{clock};
    TestCertificate certificate{u"IP:127.0.0.1"_s};
    TlsServer host{TlsServer::Protocol::http1, certificate};
    HttpClient http{trusting(certificate)};
    DownloadServer plain;
};

TEST_F(EncryptedUpdatesTest, TheManifestIsNotTakenFromAHostWithoutEncryption)
{
    UpdateChecker checker(http, {origin(), origin(), {}});
    host.addFile(u"downloads/latest.json"_s, rawHttpResponse(200, manifest()));
    EXPECT_EQ(runTask(scheduler, checker.fetchLatest()).version, u"1.3"_s);
    plain.setFile(u"/latest.json"_s, {manifest()});
    leadAway(u"downloads/latest.json"_s, u"/latest.json"_s);
    EXPECT_THROW(runTask(scheduler, checker.fetchLatest()), UpdateCheckerError);
    EXPECT_TRUE(plain.requests().isEmpty());
}

TEST_F(EncryptedUpdatesTest, TheImageIsNotTakenFromAHostWithoutEncryption)
{
    UpdateDMGDownloader downloader(http, home.path());
    plain.setFile(u"/image"_s, {"image"});
    leadAway(u"image"_s, u"/image"_s);
    const auto file = runTask(scheduler, downloader.download(host.url(u"image"_s), [](double) {}));
    EXPECT_EQ(home.read(QFileInfo(file->image().path).fileName()), "elsewhere"); // which is no image
    EXPECT_TRUE(plain.requests().isEmpty());
}

} // namespace
} // namespace morvane
