#include "net/TransportError.h"
#include "net/CurlError.h"

#include <QStringList>
#include <cerrno>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using Kind = TransportError::Kind;

TEST(TransportErrorTest, ConnectionFailuresAreMarked)
{
    for (const Kind kind : {Kind::notConnectedToInternet, Kind::unresolvedHost, Kind::cannotConnectToHost,
                            Kind::networkConnectionLost, Kind::timedOut})
        EXPECT_TRUE(TransportError(kind).isConnectionFailure()) << static_cast<int>(kind);
    for (const Kind kind : {Kind::tlsFailure, Kind::malformedResponse, Kind::tooLarge, Kind::tooManyRedirects,
                            Kind::invalidUrl, Kind::invalidRequest, Kind::clientClosed, Kind::other})
        EXPECT_FALSE(TransportError(kind).isConnectionFailure()) << static_cast<int>(kind);
}

TEST(TransportErrorTest, EveryKindHasASentenceOfItsOwn)
{
    QStringList texts;
    for (int kind = 0; kind <= static_cast<int>(Kind::other); ++kind) {
        const TransportError error(static_cast<Kind>(kind));
        EXPECT_TRUE(error.description().endsWith('.')) << kind;
        EXPECT_FALSE(texts.contains(error.description())) << kind;
        EXPECT_EQ(QString::fromUtf8(error.what()), error.description());
        texts.append(error.description());
    }
}

TEST(TransportErrorTest, DetailIsAddedToTheSentence)
{
    const TransportError error(Kind::tlsFailure, u"The certificate has expired."_s);
    EXPECT_TRUE(error.description().endsWith(" The certificate has expired."));
}

TEST(TransportErrorTest, ResultsOfTheLibraryAreToldApart)
{
    const auto kindOf = [](CURLcode result, const char *text = "", int systemError = 0) {
        return transportError(result, systemError, QByteArrayView(text)).kind();
    };
    EXPECT_EQ(kindOf(CURLE_COULDNT_CONNECT, "", ECONNREFUSED), Kind::cannotConnectToHost);
    EXPECT_EQ(kindOf(CURLE_COULDNT_CONNECT, "", ENETUNREACH), Kind::notConnectedToInternet);
    EXPECT_EQ(kindOf(CURLE_OPERATION_TIMEDOUT), Kind::timedOut);
    EXPECT_EQ(kindOf(CURLE_PARTIAL_FILE), Kind::networkConnectionLost);
    EXPECT_EQ(kindOf(CURLE_GOT_NOTHING), Kind::networkConnectionLost);
    EXPECT_EQ(kindOf(CURLE_RECV_ERROR, "Recv failure: Connection reset by peer"),
              Kind::networkConnectionLost);
    EXPECT_EQ(kindOf(CURLE_RECV_ERROR, "Illegal or missing hexadecimal sequence in chunked-encoding"),
              Kind::malformedResponse);
    EXPECT_EQ(kindOf(CURLE_SSL_CONNECT_ERROR, "error:0A00010B:SSL routines::wrong version number"),
              Kind::tlsFailure);
    EXPECT_EQ(kindOf(CURLE_SSL_CONNECT_ERROR, "Recv failure: Connection reset by peer"),
              Kind::networkConnectionLost);
    EXPECT_EQ(kindOf(CURLE_PEER_FAILED_VERIFICATION), Kind::tlsFailure);
    EXPECT_EQ(kindOf(CURLE_UNSUPPORTED_PROTOCOL), Kind::malformedResponse);
    EXPECT_EQ(kindOf(CURLE_BAD_CONTENT_ENCODING), Kind::malformedResponse);
    EXPECT_EQ(kindOf(CURLE_LDAP_CANNOT_BIND), Kind::other);
}

TEST(TransportErrorTest, OnlyWhatHasNoSentenceOfItsOwnShowsTheLibrarysText)
{
    EXPECT_TRUE(transportError(CURLE_PEER_FAILED_VERIFICATION, 0, "SSL certificate problem")
                    .description()
                    .endsWith(" SSL certificate problem."));
    EXPECT_EQ(transportError(CURLE_PARTIAL_FILE, 0, "transfer closed").description(),
              TransportError(Kind::networkConnectionLost).description());
}

} // namespace
} // namespace morvane
