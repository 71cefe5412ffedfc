#include "support/TestCertificate.h"

#include <QProcess>

using namespace Qt::StringLiterals;

namespace morvane {

TestCertificate::TestCertificate(const QString &names)
{
    QProcess openssl;
    openssl.start(u"openssl"_s,
                  {u"req"_s, u"-x509"_s, u"-newkey"_s, u"ec"_s, u"-pkeyopt"_s,
                   u"ec_paramgen_curve:prime256v1"_s, u"-nodes"_s, u"-days"_s, u"2"_s, u"-subj"_s,
                   u"/CN=Morvane test"_s, u"-addext"_s, u"subjectAltName="_s + names, u"-keyout"_s, keyFile(),
                   u"-out"_s, certificateFile()});
    m_made = openssl.waitForFinished() && openssl.exitCode() == 0;
}

} // namespace morvane
