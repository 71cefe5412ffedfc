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
    for (const Kind kind : {Kind::notConnectedToInternet, Kind::cannotConnectToHost,
                            Kind::networkConnectionLost, Kind::timedOut})
        EXPECT_TRUE(TransportError(kind).isConnectionFailure()) << static_cast<int>(kind);
    for (const Kind kind :
         {Kind::unresolvedHost, Kind::tlsFailure, Kind::malformedResponse, Kind::tooLarge,
          Kind::tooManyRedirects, Kind::invalidUrl, Kind::invalidRequest, Kind::clientClosed, Kind::other})
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

TEST(TransportErrorTest, TheLibrarysTextIsNeverShown)
{
    for (int result = CURLE_UNSUPPORTED_PROTOCOL; result < CURL_LAST; ++result) {
        const auto error = transportError(static_cast<CURLcode>(result), 0, "libcurl says");
        EXPECT_FALSE(error.description().contains("libcurl")) << result;
        EXPECT_TRUE(error.description().startsWith(TransportError(error.kind()).description())) << result;
    }
}

TEST(TransportErrorTest, WhatIsWrongWithACertificateIsSaid)
{
    const auto problem = [](long verification) {
        return transportError(CURLE_PEER_FAILED_VERIFICATION, 0, "SSL", verification).description();
    };
    for (const long otherName : {0, 1})
        EXPECT_TRUE(problem(otherName).endsWith(" The server's certificate is for another name."));
    EXPECT_TRUE(problem(10).endsWith(" The server's certificate has expired."));
    for (const long untrusted : {18, 19, 20, 21})
        EXPECT_TRUE(problem(untrusted).endsWith(" comes from nobody whom this computer trusts."));
    EXPECT_TRUE(problem(23).endsWith(" The server's certificate is not valid."));
}

} // namespace
} // namespace morvane
