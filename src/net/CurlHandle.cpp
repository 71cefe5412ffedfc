#include "net/CurlHandle.h"

#include "net/ConnectionOptions.h"
#include "net/CurlError.h"
#include "net/LocalNetwork.h"

#include <QFile>
#include <new>

namespace morvane {

namespace {

/// A read of this size may grow about a thousandfold when decompressed, and libcurl keeps at most 64 MiB of
/// that while a transfer is paused. In bytes.
constexpr long receiveBuffer = 32 * 1024;

/// Large bodies go out in pieces of this size. In bytes; libcurl's own is 64 KiB.
constexpr long sendBuffer = 256 * 1024;

bool alwaysHasBody(const QByteArray &method)
{
    return method == "POST" || method == "PUT" || method == "PATCH";
}

/// Whether a request does the same when it arrives twice.
bool isRepeatable(const QByteArray &method)
{
    return method != "POST" && method != "PATCH";
}

/// Called before a request is sent. A kept connection may end before the first byte of the answer, and
/// libcurl would then send the request again, although the server may well have acted on it.
int refuseToRepeat(void *handle, char *, char *, int, int)
{
    long sent = 0; // in bytes, on all connections that were tried
    curl_easy_getinfo(static_cast<CURL *>(handle), CURLINFO_REQUEST_SIZE, &sent);
    return sent == 0 ? CURL_PREREQFUNC_OK : CURL_PREREQFUNC_ABORT;
}

std::size_t headerCallback(char *data, std::size_t, std::size_t size, void *sink)
{
    const QByteArrayView line(data, static_cast<qsizetype>(size));
    return static_cast<CurlHandle::Sink *>(sink)->receiveHeaderLine(line) ? size : size + 1;
}

std::size_t bodyCallback(char *data, std::size_t, std::size_t size, void *sink)
{
    const QByteArrayView bytes(data, static_cast<qsizetype>(size));
    switch (static_cast<CurlHandle::Sink *>(sink)->receiveBody(bytes)) {
    case CurlHandle::Receive::taken:
        return size;
    case CurlHandle::Receive::pause:
        return CURL_WRITEFUNC_PAUSE;
    case CurlHandle::Receive::stop:
        break;
    }
    return size + 1; // any other number than `size` ends the transfer
}

int progressCallback(void *sink, curl_off_t, curl_off_t received, curl_off_t, curl_off_t sent)
{
    static_cast<CurlHandle::Sink *>(sink)->noticeProgress(received + sent);
    return 0;
}

} // namespace

CurlHandle::CurlHandle(const HttpRequest &request, const HttpClientOptions &options, Sink &sink)
    : m_handle(curl_easy_init())
{
    if (!m_handle)
        throw std::bad_alloc();
    setConnection(request, options);
    setMethod(request);
    setHeaders(request, options);
    setCallbacks(sink);
}

TransportError CurlHandle::error(CURLcode result) const
{
    long systemError = 0;
    long verification = 0;
    curl_easy_getinfo(get(), CURLINFO_OS_ERRNO, &systemError);
    curl_easy_getinfo(get(), CURLINFO_SSL_VERIFYRESULT, &verification);
    return transportError(result, static_cast<int>(systemError), QByteArrayView(m_errorText.data()),
                          verification);
}

void CurlHandle::setConnection(const HttpRequest &request, const HttpClientOptions &options)
{
    CURL *const handle = get();
    curl_easy_setopt(handle, CURLOPT_ERRORBUFFER, m_errorText.data());
    curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
    // A name lookup that hangs must not hang the thread when its transfer is taken back.
    curl_easy_setopt(handle, CURLOPT_QUICK_EXIT, 1L);
    curl_easy_setopt(handle, CURLOPT_URL, request.url.toEncoded(QUrl::RemoveFragment).constData());
    curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, "http,https");
    for (const auto &[option, value] : connectionOptions(request))
        curl_easy_setopt(handle, option, value);
    curl_easy_setopt(handle, CURLOPT_FOLLOWLOCATION, 0L);
    curl_easy_setopt(handle, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    curl_easy_setopt(handle, CURLOPT_BUFFERSIZE, receiveBuffer);
    curl_easy_setopt(handle, CURLOPT_ACCEPT_ENCODING, ""); // all that libcurl can decompress
    if (isLoopbackHost(request.url.host()))
        curl_easy_setopt(handle, CURLOPT_PROXY, "");
    if (!options.trustedCertificates.isEmpty()) {
        const QByteArray file = QFile::encodeName(options.trustedCertificates);
        curl_easy_setopt(handle, CURLOPT_CAINFO, file.constData());
    }
}

void CurlHandle::setMethod(const HttpRequest &request)
{
    CURL *const handle = get();
    if (request.method == "HEAD") {
        curl_easy_setopt(handle, CURLOPT_NOBODY, 1L);
        return;
    }
    if (!request.body.isEmpty() || alwaysHasBody(request.method))
        setBody(request);
    curl_easy_setopt(handle, CURLOPT_CUSTOMREQUEST, request.method.constData());
}

void CurlHandle::setBody(const HttpRequest &request)
{
    CURL *const handle = get();
    curl_easy_setopt(handle, CURLOPT_POST, 1L);
    curl_easy_setopt(handle, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()));
    // Small bodies leave together with the head, in one packet.
    curl_easy_setopt(handle, CURLOPT_POSTFIELDS, request.body.constData());
    if (!isRepeatable(request.method)) {
        curl_easy_setopt(handle, CURLOPT_PREREQFUNCTION, refuseToRepeat);
        curl_easy_setopt(handle, CURLOPT_PREREQDATA, handle);
    }
    if (request.body.size() > sendBuffer)
        curl_easy_setopt(handle, CURLOPT_UPLOAD_BUFFERSIZE, sendBuffer);
}

void CurlHandle::setHeaders(const HttpRequest &request, const HttpClientOptions &options)
{
    for (const auto &[name, value] : request.headers.fields())
        addHeader(value.trimmed().isEmpty() ? name + ';'
                                            : name + ": " + value); // libcurl's form for an empty value
    if (!request.headers.contains("User-Agent") && !options.userAgent.isEmpty())
        addHeader("User-Agent: " + options.userAgent);
    // What libcurl would add by itself: a form's type, and a wait for the server's leave to send the body.
    if (!request.headers.contains("Content-Type"))
        addHeader("Content-Type:");
    if (!request.headers.contains("Expect"))
        addHeader("Expect:");
    curl_easy_setopt(get(), CURLOPT_HTTPHEADER, m_headers.get());
}

void CurlHandle::setCallbacks(Sink &sink)
{
    CURL *const handle = get();
    curl_easy_setopt(handle, CURLOPT_HEADERFUNCTION, headerCallback);
    curl_easy_setopt(handle, CURLOPT_HEADERDATA, &sink);
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, bodyCallback);
    curl_easy_setopt(handle, CURLOPT_WRITEDATA, &sink);
    curl_easy_setopt(handle, CURLOPT_XFERINFOFUNCTION, progressCallback);
    curl_easy_setopt(handle, CURLOPT_XFERINFODATA, &sink);
    curl_easy_setopt(handle, CURLOPT_NOPROGRESS, 0L);
}

void CurlHandle::addHeader(const QByteArray &line)
{
    curl_slist *const extended = curl_slist_append(m_headers.get(), line.constData());
    if (!extended)
        throw std::bad_alloc();
    static_cast<void>(m_headers.release()); // it is the head of `extended` now
    m_headers.reset(extended);
}

} // namespace morvane
