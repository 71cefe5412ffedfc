#pragma once

#include <QByteArray>
#include <QString>
#include <exception>

namespace morvane {

/// Why a tool server could not be used, in words for the user and the model.
class MCPError : public std::exception {
public:
    explicit MCPError(const QString &message) : m_message(message), m_what(message.toUtf8()) {}

    const QString &message() const { return m_message; }
    const char *what() const noexcept override { return m_what.constData(); }

private:
    QString m_message;
    QByteArray m_what;
};

} // namespace morvane
