#pragma once

#include <QString>
#include <QTemporaryDir>

namespace morvane {

/// A self-signed certificate with its key in a temporary folder, made with the openssl program.
class TestCertificate {
public:
    /// `names` as in a subject alternative name, such as "IP:127.0.0.1,DNS:localhost".
    explicit TestCertificate(const QString &names);

    /// Whether the program could make it.
    bool isMade() const { return m_made; }
    QString certificateFile() const { return m_folder.filePath(QStringLiteral("certificate.pem")); }
    QString keyFile() const { return m_folder.filePath(QStringLiteral("key.pem")); }

private:
    QTemporaryDir m_folder;
    bool m_made = false;
};

} // namespace morvane
