#pragma once

#include <QByteArray>
#include <QString>
#include <exception>

namespace morvane {

/// Why a download failed although the connection did not.
class DownloadError : public std::exception {
public:
    enum class Kind {
        refused,  ///< The server answered with something else than the file; see status().
        tooLarge, ///< The file is above its limit.
        unusable, ///< The server's answer contradicts itself or what was asked for.
        diskFull,
        disk, ///< The file cannot be written; see reason().
    };

    explicit DownloadError(Kind kind, int status = 0, const QString &reason = {})
        : m_kind(kind), m_status(status), m_reason(reason), m_what("download: " + reason.toUtf8())
    {
    }

    Kind kind() const { return m_kind; }
    int status() const { return m_status; }
    /// The system's words for what the disk did not do.
    const QString &reason() const { return m_reason; }
    const char *what() const noexcept override { return m_what.constData(); }

private:
    Kind m_kind;
    int m_status;
    QString m_reason;
    QByteArray m_what;
};

} // namespace morvane
