#pragma once

#include <QByteArray>
#include <QString>
#include <exception>

namespace morvane {

/// A failure that is told to the user as it stands, in a finished sentence.
class ErrorForUser : public std::exception {
public:
    explicit ErrorForUser(const QString &message) : m_message(message), m_what(message.toUtf8()) {}

    const QString &message() const { return m_message; }
    const char *what() const noexcept override { return m_what.constData(); }

private:
    QString m_message;
    QByteArray m_what;
};

} // namespace morvane
