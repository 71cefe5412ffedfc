#include "net/FileDownload.h"

#include "async/OffMain.h"
#include "net/DownloadError.h"
#include "net/HttpClient.h"
#include "net/Log.h"
#include "net/PartialFile.h"

#include <memory>

namespace morvane {

namespace {

constexpr int wholeFile = 200;
constexpr int partOfFile = 206;
constexpr int noSuchRange = 416;

/// What an earlier download left, of this address.
struct Part {
    DownloadRecord record;
    qint64 size = 0;
};

std::optional<Part> openPart(PartialFile &file, const QString &url)
{
    file.open();
    auto record = file.record();
    qint64 size = file.size();
    if (!record || record->url != url || size == 0)
        return std::nullopt;
    // Of a part that is complete the last byte is asked for again, since the answer tells whether the file is
    // still the same.
    if (record->total && size >= *record->total)
        size = *record->total - 1;
    return Part{std::move(*record), size};
}

HttpRequest requestFor(const QUrl &url, const std::optional<Part> &part)
{
    HttpRequest request;
    request.url = url;
    request.encryption = EncryptionRule::kept;
    // A range of compressed bytes would be of no use.
    request.headers.set("Accept-Encoding", "identity");
    if (part && part->size > 0) {
        request.headers.set("Range", "bytes=" + QByteArray::number(part->size) + '-');
        request.headers.set("If-Range", part->record.validator);
    }
    return request;
}

/// Whether this is the rest of the very file of which the part is there.
bool continues(const HttpResponse &response, const Part &part)
{
    const auto range = ContentRange::parse(response.headers().value("Content-Range").value_or(QByteArray()));
    return range && range->first == part.size && range->total == part.record.total.value_or(range->total) &&
           validatorIn(response.headers()) == part.record.validator;
}

void refuseEncoded(const HttpResponse &response)
{
    const QByteArray encoding = response.headers().value("Content-Encoding").value_or("identity");
    if (encoding.trimmed().toLower() != "identity")
        throw DownloadError(DownloadError::Kind::unusable, response.status());
}

DownloadRecord recordOf(const HttpResponse &response, const QString &url)
{
    DownloadRecord record{url, validatorIn(response.headers()), std::nullopt};
    bool isNumber = false;
    const qint64 length =
        response.headers().value("Content-Length").value_or(QByteArray()).toLongLong(&isNumber);
    if (isNumber && length > 0)
        record.total = length;
    return record;
}

/// Where the body goes, and how much of it there may be.
struct Reception {
    std::shared_ptr<PartialFile> file;
    qint64 received = 0;
    std::optional<qint64> total;
};

Task<void> receive(PieceReader reader, Reception reception, const DownloadOrder *order)
{
    const qint64 most = reception.total.value_or(order->maximumBytes);
    if (most > order->maximumBytes)
        throw DownloadError(DownloadError::Kind::tooLarge);
    while (true) {
        QByteArray piece = co_await reader.next();
        if (piece.isEmpty())
            break;
        reception.received += piece.size();
        if (reception.received > most)
            throw DownloadError(reception.total ? DownloadError::Kind::unusable
                                                : DownloadError::Kind::tooLarge);
        co_await runOffMain([file = reception.file, piece = std::move(piece)] { file->write(piece); });
        order->onProgress(reception.received, reception.total);
    }
    if (reception.total && reception.received != *reception.total)
        throw TransportError(TransportError::Kind::networkConnectionLost);
    co_await runOffMain([file = reception.file] { file->close(); });
}

} // namespace

Task<void> downloadFile(HttpClient *http, DownloadOrder order)
{
    const QString url = order.url.toString(QUrl::FullyEncoded);
    const auto file = std::make_shared<PartialFile>(order.path);
    std::optional<Part> part = co_await runOffMain([file, url] { return openPart(*file, url); });
    while (true) {
        HttpResponse response = co_await http->open(requestFor(order.url, part));
        refuseEncoded(response);
        const int status = response.status();
        const bool isRest = part && part->size > 0 && status == partOfFile;
        if (isRest && continues(response, *part)) {
            const DownloadRecord record = part->record;
            const qint64 from = part->size;
            const auto total =
                ContentRange::parse(response.headers().value("Content-Range").value_or(QByteArray()))->total;
            co_await runOffMain([file, record, from] { file->begin(record, from); });
            co_await receive(response.pieces(), {file, from, total}, &order);
            co_return;
        }
        if (isRest || (part && status == noSuchRange)) {
            qCInfo(netLog) << "the file has changed on the server; the download begins anew";
            part.reset();
            continue;
        }
        if (status != wholeFile)
            throw DownloadError(DownloadError::Kind::refused, status);
        const DownloadRecord record = recordOf(response, url);
        co_await runOffMain([file, record] { file->begin(record, 0); });
        co_await receive(response.pieces(), {file, 0, record.total}, &order);
        co_return;
    }
}

} // namespace morvane
