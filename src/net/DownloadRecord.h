#pragma once

#include <QByteArray>
#include <QString>
#include <QtGlobal>
#include <optional>

namespace morvane {

class HttpHeaders;

/// What must be known of a file on a server to go on with a part of it: kept beside the part.
struct DownloadRecord {
    QString url;
    QByteArray validator;        ///< As sent in If-Range: a strong entity tag, or a date. Never empty.
    std::optional<qint64> total; ///< The size of the whole file in bytes.

    bool operator==(const DownloadRecord &) const = default;

    QByteArray toJson() const;
    /// Nothing for what is no record of ours.
    static std::optional<DownloadRecord> fromJson(const QByteArray &json);
};

/// What tells this version of the file from any other; empty if the server names nothing that does.
QByteArray validatorIn(const HttpHeaders &headers);

/// A `Content-Range` of one part of a file whose size is told.
struct ContentRange {
    qint64 first = 0;
    qint64 total = 0;

    /// Nothing if it is malformed, unsatisfied, or does not reach to the file's end.
    static std::optional<ContentRange> parse(const QByteArray &value);
};

} // namespace morvane
