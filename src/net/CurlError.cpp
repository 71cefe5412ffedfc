#include "net/CurlError.h"

#include "net/LocalNetwork.h"

#include <cerrno>

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
        return hasNetwork() ? Kind::UnresolvedHost : Kind::NotConnectedToInternet;
    case CURLE_COULDNT_CONNECT:
    case CURLE_PROXY:
        return isNoRoute(systemError) ? Kind::NotConnectedToInternet : Kind::CannotConnectToHost;
    case CURLE_OPERATION_TIMEDOUT:
        return Kind::TimedOut;
    case CURLE_RECV_ERROR:
        // The same code stands for a broken chunk header, told apart by its message alone.
        return text.contains("chunked-encoding") ? Kind::MalformedResponse : Kind::NetworkConnectionLost;
    case CURLE_PARTIAL_FILE:
    case CURLE_GOT_NOTHING:
    case CURLE_SEND_ERROR:
    case CURLE_SEND_FAIL_REWIND:
    case CURLE_HTTP2:
    case CURLE_HTTP2_STREAM:
        return Kind::NetworkConnectionLost;
    case CURLE_SSL_CONNECT_ERROR:
        return isConnectionEnd(text) ? Kind::NetworkConnectionLost : Kind::TlsFailure;
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
        return Kind::TlsFailure;
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_BAD_CONTENT_ENCODING:
    case CURLE_UNSUPPORTED_PROTOCOL: // an answer without a head, which libcurl takes for HTTP/0.9
        return Kind::MalformedResponse;
    case CURLE_OUT_OF_MEMORY: // a header line or a decompressed part above libcurl's own limits
    case CURLE_FILESIZE_EXCEEDED:
        return Kind::TooLarge;
    case CURLE_URL_MALFORMAT:
        return Kind::InvalidUrl;
    default:
        return Kind::Other;
    }
}

} // namespace

TransportError transportError(CURLcode result, int systemError, QByteArrayView text)
{
    const Kind kind = kindOf(result, systemError, text);
    if (kind != Kind::TlsFailure && kind != Kind::Other)
        return TransportError(kind);
    QString detail = QString::fromUtf8(text.isEmpty() ? QByteArrayView(curl_easy_strerror(result)) : text);
    if (!detail.endsWith(QLatin1Char('.')))
        detail += QLatin1Char('.');
    return TransportError(kind, detail);
}

} // namespace morvane
