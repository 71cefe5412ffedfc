#include "browser/pages/ProxyFlags.h"

#include <QStringList>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// Whatever takes servers of its own by this name, in small letters or else in large ones. A server started
/// for a page could be given HTTP_PROXY by whoever asks for the page.
QString named(const QProcessEnvironment &environment, const QString &name)
{
    const QString value = environment.value(name);
    return value.isEmpty() && name != "http_proxy"_L1 ? environment.value(name.toUpper()) : value;
}

/// Empty for what is no address of a proxy.
QString proxyServer(const QString &text)
{
    const QUrl address(text.contains("://"_L1) ? text : u"http://"_s + text, QUrl::StrictMode);
    if (!address.isValid() || address.host().isEmpty())
        return {};
    const QString scheme = address.scheme() == "socks5h"_L1 ? u"socks5"_s : address.scheme();
    constexpr int usualPort = 1080;
    return u"%1://%2:%3"_s.arg(scheme, address.host(QUrl::FullyEncoded)).arg(address.port(usualPort));
}

} // namespace

QByteArray proxyFlags(const QProcessEnvironment &environment)
{
    QStringList servers;
    for (const QString &scheme : {u"http"_s, u"https"_s}) {
        QString server = proxyServer(named(environment, scheme + u"_proxy"_s));
        if (server.isEmpty())
            server = proxyServer(named(environment, u"all_proxy"_s));
        if (!server.isEmpty())
            servers.append(scheme + u'=' + server);
    }
    const QStringList past = named(environment, u"no_proxy"_s).simplified().split(u',', Qt::SkipEmptyParts);
    if (servers.isEmpty() || past.contains(u"*"_s))
        return {};
    QStringList bypassed;
    for (const QString &entry : past) {
        QString host = entry.trimmed();
        while (host.startsWith(u'.'))
            host.remove(0, 1);
        if (host.isEmpty() || host.contains(u' ') || host.contains(u'"'))
            continue;
        bypassed.append(host);
        // Below a name there are others, below a number none.
        if (host.back().isLetter() && !host.contains(u':'))
            bypassed.append(u"*."_s + host);
    }
    QString flags = u" --proxy-server="_s + servers.join(u';');
    if (!bypassed.isEmpty())
        flags += u" --proxy-bypass-list="_s + bypassed.join(u';');
    return flags.toUtf8();
}

} // namespace morvane
