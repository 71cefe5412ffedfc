#pragma once

#include <QByteArray>
#include <QString>
#include <exception>

namespace morvane {

/// Why a file could not be attached, as a finished sentence for the user.
class AttachmentError : public std::exception {
public:
    explicit AttachmentError(const QString &message) : m_message(message), m_what(message.toUtf8()) {}

    const QString &message() const { return m_message; }
    const char *what() const noexcept override { return m_what.constData(); }

private:
    QString m_message;
    QByteArray m_what;
};

} // namespace morvane
