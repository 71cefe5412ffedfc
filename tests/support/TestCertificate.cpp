#include "support/TestCertificate.h"

#include <QProcess>

namespace morvane {

TestCertificate::TestCertificate(const QString &names)
{
    QProcess openssl;
    openssl.start(QStringLiteral("openssl"),
                  {QStringLiteral("req"), QStringLiteral("-x509"), QStringLiteral("-newkey"),
                   QStringLiteral("ec"), QStringLiteral("-pkeyopt"),
                   QStringLiteral("ec_paramgen_curve:prime256v1"), QStringLiteral("-nodes"),
                   QStringLiteral("-days"), QStringLiteral("2"), QStringLiteral("-subj"),
                   QStringLiteral("/CN=Morvane test"), QStringLiteral("-addext"),
                   QStringLiteral("subjectAltName=") + names, QStringLiteral("-keyout"), keyFile(),
                   QStringLiteral("-out"), certificateFile()});
    m_made = openssl.waitForFinished() && openssl.exitCode() == 0;
}

} // namespace morvane
