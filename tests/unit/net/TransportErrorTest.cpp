#include "net/TransportError.h"
#include "net/CurlError.h"

#include <QStringList>
#include <cerrno>
#include <gtest/gtest.h>

namespace morvane {
namespace {

using Kind = TransportError::Kind;

TEST(TransportErrorTest, ConnectionFailuresAreMarked)
{
    for (const Kind kind : {Kind::NotConnectedToInternet, Kind::UnresolvedHost, Kind::CannotConnectToHost,
                            Kind::NetworkConnectionLost, Kind::TimedOut})
        EXPECT_TRUE(TransportError(kind).isConnectionFailure()) << static_cast<int>(kind);
    for (const Kind kind : {Kind::TlsFailure, Kind::MalformedResponse, Kind::TooLarge, Kind::TooManyRedirects,
                            Kind::InvalidUrl, Kind::InvalidRequest, Kind::ClientClosed, Kind::Other})
        EXPECT_FALSE(TransportError(kind).isConnectionFailure()) << static_cast<int>(kind);
}

TEST(TransportErrorTest, EveryKindHasASentenceOfItsOwn)
{
    QStringList texts;
    for (int kind = 0; kind <= static_cast<int>(Kind::Other); ++kind) {
        const TransportError error(static_cast<Kind>(kind));
        EXPECT_TRUE(error.description().endsWith('.')) << kind;
        EXPECT_FALSE(texts.contains(error.description())) << kind;
        EXPECT_EQ(QString::fromUtf8(error.what()), error.description());
        texts.append(error.description());
    }
}

TEST(TransportErrorTest, DetailIsAddedToTheSentence)
{
    const TransportError error(Kind::TlsFailure, QStringLiteral("The certificate has expired."));
    EXPECT_TRUE(error.description().endsWith(" The certificate has expired."));
}

TEST(TransportErrorTest, ResultsOfTheLibraryAreToldApart)
{
    const auto kindOf = [](CURLcode result, const char *text = "", int systemError = 0) {
        return transportError(result, systemError, QByteArrayView(text)).kind();
    };
    EXPECT_EQ(kindOf(CURLE_COULDNT_CONNECT, "", ECONNREFUSED), Kind::CannotConnectToHost);
    EXPECT_EQ(kindOf(CURLE_COULDNT_CONNECT, "", ENETUNREACH), Kind::NotConnectedToInternet);
    EXPECT_EQ(kindOf(CURLE_OPERATION_TIMEDOUT), Kind::TimedOut);
    EXPECT_EQ(kindOf(CURLE_PARTIAL_FILE), Kind::NetworkConnectionLost);
    EXPECT_EQ(kindOf(CURLE_GOT_NOTHING), Kind::NetworkConnectionLost);
    EXPECT_EQ(kindOf(CURLE_RECV_ERROR, "Recv failure: Connection reset by peer"),
              Kind::NetworkConnectionLost);
    EXPECT_EQ(kindOf(CURLE_RECV_ERROR, "Illegal or missing hexadecimal sequence in chunked-encoding"),
              Kind::MalformedResponse);
    EXPECT_EQ(kindOf(CURLE_SSL_CONNECT_ERROR, "error:0A00010B:SSL routines::wrong version number"),
              Kind::TlsFailure);
    EXPECT_EQ(kindOf(CURLE_SSL_CONNECT_ERROR, "Recv failure: Connection reset by peer"),
              Kind::NetworkConnectionLost);
    EXPECT_EQ(kindOf(CURLE_PEER_FAILED_VERIFICATION), Kind::TlsFailure);
    EXPECT_EQ(kindOf(CURLE_UNSUPPORTED_PROTOCOL), Kind::MalformedResponse);
    EXPECT_EQ(kindOf(CURLE_BAD_CONTENT_ENCODING), Kind::MalformedResponse);
    EXPECT_EQ(kindOf(CURLE_LDAP_CANNOT_BIND), Kind::Other);
}

TEST(TransportErrorTest, OnlyWhatHasNoSentenceOfItsOwnShowsTheLibrarysText)
{
    EXPECT_TRUE(transportError(CURLE_PEER_FAILED_VERIFICATION, 0, "SSL certificate problem")
                    .description()
                    .endsWith(" SSL certificate problem."));
    EXPECT_EQ(transportError(CURLE_PARTIAL_FILE, 0, "transfer closed").description(),
              TransportError(Kind::NetworkConnectionLost).description());
}

} // namespace
} // namespace morvane
