#include "integration/net/NetFixture.h"
#include "support/TlsServer.h"

namespace morvane {
namespace {

using Kind = TransportError::Kind;

class TlsTest : public NetTest {
protected:
    TestCertificate certificate{QStringLiteral("IP:127.0.0.1")};

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
    TlsServer server(TlsServer::Protocol::Http1, certificate);
    ASSERT_TRUE(server.isRunning());
    server.addFile(QStringLiteral("page"), rawHttpResponse(200, "secret"));
    HttpClient trustful(trusting(certificate));
    EXPECT_EQ(runTask(scheduler, trustful.fetch(get(server.url("page")), ampleBytes)).body, "secret");
}

TEST_F(TlsTest, CertificateThatNobodyVouchesForIsRefused)
{
    TlsServer server(TlsServer::Protocol::Http1, certificate);
    ASSERT_TRUE(server.isRunning());
    server.addFile(QStringLiteral("page"), rawHttpResponse(200, "secret"));
    try {
        fetch(get(server.url("page")));
        FAIL() << "the certificate was accepted";
    } catch (const TransportError &error) {
        EXPECT_EQ(error.kind(), Kind::TlsFailure);
        EXPECT_FALSE(error.isConnectionFailure());
        EXPECT_TRUE(error.description().contains("certificate")) << error.what();
    }
}

TEST_F(TlsTest, CertificateForAnotherNameIsRefused)
{
    TestCertificate other(QStringLiteral("DNS:other.test"));
    ASSERT_TRUE(other.isMade());
    TlsServer server(TlsServer::Protocol::Http1, other);
    ASSERT_TRUE(server.isRunning());
    HttpClient trustful(trusting(other));
    EXPECT_EQ(failureOf(trustful.fetch(get(server.url("page")), ampleBytes)), Kind::TlsFailure);
}

TEST_F(TlsTest, ServerWithoutTlsIsATlsFailure)
{
    RawHttpServer server([](RawHttpConnection &connection) {
        connection.send("HTTP/1.1 400 Bad Request\r\nContent-Length: 0\r\n\r\n");
        connection.waitUntilClosedByPeer();
    });
    QUrl url = server.url();
    url.setScheme(QStringLiteral("https"));
    EXPECT_EQ(fetchFailure(get(url)), Kind::TlsFailure);
}

TEST_F(TlsTest, ConnectionThatEndsInTheHandshakeIsLost)
{
    RawHttpServer resetting([](RawHttpConnection &connection) {
        connection.waitForBytes();
        connection.reset();
    });
    QUrl url = resetting.url();
    url.setScheme(QStringLiteral("https"));
    EXPECT_EQ(fetchFailure(get(url)), Kind::NetworkConnectionLost);
    RawHttpServer closing([](RawHttpConnection &connection) { connection.waitForBytes(); });
    url.setPort(closing.port());
    EXPECT_EQ(fetchFailure(get(url)), Kind::NetworkConnectionLost);
}

TEST_F(TlsTest, SilenceInTheHandshakeTimesOut)
{
    RawHttpServer server([](RawHttpConnection &connection) { connection.waitUntilClosedByPeer(); });
    HttpRequest request = get(server.url());
    request.url.setScheme(QStringLiteral("https"));
    request.silenceLimit = std::chrono::milliseconds(150);
    EXPECT_EQ(fetchFailure(request), Kind::TimedOut);
}

TEST_F(TlsTest, TruncatedBodyIsALostConnection)
{
    TlsServer server(TlsServer::Protocol::Http1, certificate);
    ASSERT_TRUE(server.isRunning());
    server.addFile(QStringLiteral("page"), rawHttpHead(200, {{"Content-Length", "100"}}) + "short");
    HttpClient trustful(trusting(certificate));
    EXPECT_EQ(failureOf(trustful.fetch(get(server.url("page")), ampleBytes)), Kind::NetworkConnectionLost);
}

} // namespace
} // namespace morvane
