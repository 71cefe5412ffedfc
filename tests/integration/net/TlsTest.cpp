#include "integration/net/NetFixture.h"
#include "support/TlsServer.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using Kind = TransportError::Kind;

class TlsTest : public NetTest {
protected:
    TestCertificate certificate{u"IP:127.0.0.1"_s};

    void SetUp() override { ASSERT_TRUE(certificate.isMade()); }

    static HttpClientOptions trusting(const TestCertificate &trusted)
    {
        HttpClientOptions options;
        options.trustedCertificates = trusted.certificateFile();
        return options;
    }
};

TEST_F(TlsTest, TrustedServerAnswers)
{
    TlsServer server(TlsServer::Protocol::http1, certificate);
    ASSERT_TRUE(server.isRunning());
    server.addFile(u"page"_s, rawHttpResponse(200, "secret"));
    HttpClient trustful(trusting(certificate));
    EXPECT_EQ(runTask(scheduler, trustful.fetch(get(server.url("page")), ampleBytes)).body, "secret");
}

TEST_F(TlsTest, CertificateThatNobodyVouchesForIsRefused)
{
    TlsServer server(TlsServer::Protocol::http1, certificate);
    ASSERT_TRUE(server.isRunning());
    server.addFile(u"page"_s, rawHttpResponse(200, "secret"));
    try {
        fetch(get(server.url("page")));
        FAIL() << "the certificate was accepted";
    } catch (const TransportError &error) {
        EXPECT_EQ(error.kind(), Kind::tlsFailure);
        EXPECT_FALSE(error.isConnectionFailure());
        EXPECT_TRUE(error.description().endsWith("comes from nobody whom this computer trusts."))
            << error.what();
    }
}

TEST_F(TlsTest, CertificateForAnotherNameIsRefused)
{
    TestCertificate other(u"DNS:other.test"_s);
    ASSERT_TRUE(other.isMade());
    TlsServer server(TlsServer::Protocol::http1, other);
    ASSERT_TRUE(server.isRunning());
    HttpClient trustful(trusting(other));
    try {
        runTask(scheduler, trustful.fetch(get(server.url("page")), ampleBytes));
        FAIL() << "the certificate was accepted";
    } catch (const TransportError &error) {
        EXPECT_EQ(error.kind(), Kind::tlsFailure);
        EXPECT_TRUE(error.description().endsWith("is for another name.")) << error.what();
    }
}

TEST_F(TlsTest, ServerWithoutTlsIsATlsFailure)
{
    RawHttpServer server([](RawHttpConnection &connection) {
        connection.send("HTTP/1.1 400 Bad Request\r\nContent-Length: 0\r\n\r\n");
        connection.waitUntilClosedByPeer();
    });
    QUrl url = server.url();
    url.setScheme(u"https"_s);
    EXPECT_EQ(fetchFailure(get(url)), Kind::tlsFailure);
}

TEST_F(TlsTest, ConnectionThatEndsInTheHandshakeIsLost)
{
    RawHttpServer resetting([](RawHttpConnection &connection) {
        connection.waitForBytes();
        connection.reset();
    });
    QUrl url = resetting.url();
    url.setScheme(u"https"_s);
    EXPECT_EQ(fetchFailure(get(url)), Kind::networkConnectionLost);
    RawHttpServer closing([](RawHttpConnection &connection) { connection.waitForBytes(); });
    url.setPort(closing.port());
    EXPECT_EQ(fetchFailure(get(url)), Kind::networkConnectionLost);
}

TEST_F(TlsTest, SilenceInTheHandshakeTimesOut)
{
    RawHttpServer server([](RawHttpConnection &connection) { connection.waitUntilClosedByPeer(); });
    HttpRequest request = get(server.url());
    request.url.setScheme(u"https"_s);
    request.silenceLimit = std::chrono::milliseconds(150);
    EXPECT_EQ(fetchFailure(request), Kind::timedOut);
}

TEST_F(TlsTest, TruncatedBodyIsALostConnection)
{
    TlsServer server(TlsServer::Protocol::http1, certificate);
    ASSERT_TRUE(server.isRunning());
    server.addFile(u"page"_s, rawHttpHead(200, {{"Content-Length", "100"}}) + "short");
    HttpClient trustful(trusting(certificate));
    EXPECT_EQ(failureOf(trustful.fetch(get(server.url("page")), ampleBytes)), Kind::networkConnectionLost);
}

} // namespace
} // namespace morvane
