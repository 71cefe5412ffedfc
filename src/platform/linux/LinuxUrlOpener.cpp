#include "platform/linux/LinuxUrlOpener.h"

#include <QDesktopServices>
#include <QFile>
#include <QUrlQuery>

using namespace Qt::StringLiterals;

namespace morvane {

bool LinuxUrlOpener::open(const QUrl &url)
{
    const bool isPage = url.scheme() == u"https"_s || url.scheme() == u"http"_s;
    return isPage && url.isValid() && QDesktopServices::openUrl(url);
}

bool LinuxUrlOpener::openOwnPage(const QString &path)
{
    return QFile::exists(path) && QDesktopServices::openUrl(QUrl::fromLocalFile(path));
}

bool LinuxUrlOpener::beginMail(const QString &text)
{
    // Nothing in the text can add a field of its own, such as a file to be attached.
    QUrlQuery query;
    query.addQueryItem(u"body"_s, QString::fromLatin1(QUrl::toPercentEncoding(text)));
    QUrl mail(u"mailto:"_s);
    mail.setQuery(query);
    return QDesktopServices::openUrl(mail);
}

} // namespace morvane
