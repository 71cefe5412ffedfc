#include "net/CurlError.h"

#include "net/LocalNetwork.h"
#include "net/Log.h"

#include <cerrno>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

using Kind = TransportError::Kind;

bool isNoRoute(int systemError)
{
    return systemError == ENETUNREACH || systemError == ENETDOWN;
}

/// Whether a handshake failed only because the connection ended, for which libcurl has no code of its own.
bool isConnectionEnd(QByteArrayView text)
{
    return text.startsWith("Recv failure") || text.startsWith("Send failure") ||
           text.contains(" in connection to ");
}

Kind kindOf(CURLcode result, int systemError, QByteArrayView text)
{
    switch (result) {
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
        return hasNetwork() ? Kind::unresolvedHost : Kind::notConnectedToInternet;
    case CURLE_COULDNT_CONNECT:
    case CURLE_PROXY:
        return isNoRoute(systemError) ? Kind::notConnectedToInternet : Kind::cannotConnectToHost;
    case CURLE_OPERATION_TIMEDOUT:
        return Kind::timedOut;
    case CURLE_RECV_ERROR:
        // The same code stands for a broken chunk header, told apart by its message alone.
        return text.contains("chunked-encoding") ? Kind::malformedResponse : Kind::networkConnectionLost;
    case CURLE_PARTIAL_FILE:
    case CURLE_GOT_NOTHING:
    case CURLE_SEND_ERROR:
    case CURLE_SEND_FAIL_REWIND:
    case CURLE_ABORTED_BY_CALLBACK: // a request that must not be sent a second time
    case CURLE_HTTP2:
    case CURLE_HTTP2_STREAM:
        return Kind::networkConnectionLost;
    case CURLE_SSL_CONNECT_ERROR:
        return isConnectionEnd(text) ? Kind::networkConnectionLost : Kind::tlsFailure;
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_ENGINE_NOTFOUND:
    case CURLE_SSL_ENGINE_SETFAILED:
    case CURLE_SSL_ENGINE_INITFAILED:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_CRL_BADFILE:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_SHUTDOWN_FAILED:
    case CURLE_SSL_INVALIDCERTSTATUS:
    case CURLE_SSL_PINNEDPUBKEYNOTMATCH:
    case CURLE_SSL_CLIENTCERT:
    case CURLE_USE_SSL_FAILED:
        return Kind::tlsFailure;
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_BAD_CONTENT_ENCODING:
    case CURLE_UNSUPPORTED_PROTOCOL: // an answer without a head, which libcurl takes for HTTP/0.9
        return Kind::malformedResponse;
    case CURLE_OUT_OF_MEMORY: // a header line or a decompressed part above libcurl's own limits
    case CURLE_FILESIZE_EXCEEDED:
        return Kind::tooLarge;
    case CURLE_URL_MALFORMAT:
        return Kind::invalidUrl;
    default:
        return Kind::other;
    }
}

/// What is wrong with a server's certificate, by the number that OpenSSL has for it.
QString certificateProblem(long verification)
{
    enum : long {
        fine = 0,
        notLookedAt = 1,
        notYetValid = 9,
        expired = 10,
        selfSigned = 18,
        unknownIssuer = 20,
        unverified = 21
    };
    switch (verification) {
    case fine:
    case notLookedAt: // since the name, which comes first, was another one
        return u"The server's certificate is for another name."_s;
    case notYetValid:
        return u"The server's certificate is not valid yet. Check the date and time of this computer."_s;
    case expired:
        return u"The server's certificate has expired."_s;
    case selfSigned:
    case selfSigned + 1: // at the end of its chain
    case unknownIssuer:
    case unverified:
        return u"The server's certificate comes from nobody whom this computer trusts."_s;
    default:
        return u"The server's certificate is not valid."_s;
    }
}

} // namespace

TransportError transportError(CURLcode result, int systemError, QByteArrayView text, long verification)
{
    const Kind kind = kindOf(result, systemError, text);
    qCWarning(netLog) << "a request failed:" << curl_easy_strerror(result) << "; libcurl" << int(result)
                      << "; system" << systemError;
    return result == CURLE_PEER_FAILED_VERIFICATION ? TransportError(kind, certificateProblem(verification))
                                                    : TransportError(kind);
}

} // namespace morvane
