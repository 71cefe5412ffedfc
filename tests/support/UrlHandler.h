#pragma once

#include <QDesktopServices>
#include <QList>
#include <QObject>
#include <QStringList>
#include <QUrl>

namespace morvane {

/// Takes the place of the desktop when the toolkit is to open an address, and remembers it.
class UrlHandler : public QObject {
    Q_OBJECT
public:
    UrlHandler()
    {
        for (const QString &scheme : m_schemes)
            QDesktopServices::setUrlHandler(scheme, this, "open");
    }
    ~UrlHandler() override
    {
        for (const QString &scheme : m_schemes)
            QDesktopServices::unsetUrlHandler(scheme);
    }
    Q_DISABLE_COPY_MOVE(UrlHandler)

    QList<QUrl> opened;

public Q_SLOTS:
    void open(const QUrl &url) { opened.append(url); }

private:
    const QStringList m_schemes{QStringLiteral("http"),   QStringLiteral("https"), QStringLiteral("file"),
                                QStringLiteral("mailto"), QStringLiteral("ftp"),   QStringLiteral("smb")};
};

} // namespace morvane
