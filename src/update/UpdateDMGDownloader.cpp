#include "update/UpdateDMGDownloader.h"

#include "async/OffMain.h"
#include "net/HttpClient.h"
#include "net/Log.h"
#include "update/Log.h"
#include "update/UpdateInstallError.h"

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

UpdateInstallError notSaved()
{
    return UpdateInstallError(u"Could not save the downloaded update."_s);
}

/// The bytes that the answer says it has; 0 if it does not say.
qint64 expectedBytes(const HttpResponse &response)
{
    bool isNumber = false;
    const qint64 length =
        response.headers().value("Content-Length").value_or(QByteArray()).toLongLong(&isNumber);
    return isNumber && length > 0 ? length : 0;
}

} // namespace

Task<std::shared_ptr<ImageFile>> UpdateDMGDownloader::download(QUrl url, Progress onProgress)
{
    auto file = co_await runOffMain([folder = m_folder] { return std::make_shared<ImageFile>(folder); });
    if (!file->isOpen())
        throw notSaved();
    std::exception_ptr failure;
    try {
        co_await receive(std::move(url), file, std::move(onProgress));
    } catch (const TransportError &error) {
        qCWarning(updateLog) << "the download failed:" << reasonOf(error);
        failure = std::make_exception_ptr(
            UpdateInstallError(u"The download failed: "_s + TransportError(error.kind()).description()));
    } catch (...) {
        failure = std::current_exception();
    }
    if (!failure) {
        const bool isSaved = co_await runOffMain([file] { return file->finish(); });
        if (isSaved)
            co_return file;
        failure = std::make_exception_ptr(notSaved());
    }
    co_await discard(std::move(file));
    std::rethrow_exception(failure);
}

Task<void> UpdateDMGDownloader::discard(std::shared_ptr<ImageFile> image)
{
    return runOffMain([image = std::move(image)] { image->remove(); });
}

Task<void> UpdateDMGDownloader::receive(QUrl url, std::shared_ptr<ImageFile> file, Progress onProgress)
{
    HttpRequest request;
    request.url = std::move(url);
    request.encryption = EncryptionRule::kept;
    request.headers.set("Accept-Encoding", "identity"); // the hash is that of the file as it lies there
    HttpResponse response = co_await m_http.open(std::move(request));
    const qint64 expected = expectedBytes(response);
    if (expected > m_maximumBytes)
        throw TransportError(TransportError::Kind::tooLarge);
    PieceReader pieces = response.pieces();
    qint64 received = 0;
    while (true) {
        QByteArray piece = co_await pieces.next();
        if (piece.isEmpty())
            co_return;
        received += piece.size();
        if (received > m_maximumBytes)
            throw TransportError(TransportError::Kind::tooLarge);
        const bool isWritten =
            co_await runOffMain([file, piece = std::move(piece)] { return file->write(piece); });
        if (!isWritten)
            throw notSaved();
        onProgress(expected > 0 ? static_cast<double>(received) / static_cast<double>(expected) : 0.0);
    }
}

} // namespace morvane
