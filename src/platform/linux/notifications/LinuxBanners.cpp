#include "platform/linux/notifications/LinuxBanners.h"

#include "platform/Log.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QVariantMap>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// Name and interface of the daemon.
const auto daemon = u"org.freedesktop.Notifications"_s;
const auto daemonPath = u"/org/freedesktop/Notifications"_s;

/// The action of a click on the banner itself.
const auto defaultAction = u"default"_s;

/// Daemons keep old banners in lists; choosing one of the newest is enough.
constexpr qsizetype maximumShown = 64;
/// What a daemon that does not answer can make us keep until D-Bus gives it up after 25 s.
constexpr qsizetype maximumWaiting = 1000;
constexpr qsizetype maximumToken = 4096;

QDBusMessage daemonCall(const QString &method)
{
    return QDBusMessage::createMethodCall(daemon, daemonPath, daemon, method);
}

QDBusMessage busCall(const QString &method)
{
    return QDBusMessage::createMethodCall(u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s,
                                          u"org.freedesktop.DBus"_s, method);
}

/// Calls `answered` with the reply, be it an error. The watcher belongs to `owner` and goes with it.
void call(QObject *owner, const QDBusMessage &message,
          const std::function<void(const QDBusPendingCall &)> &answered)
{
    auto *watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(message), owner);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, owner, [watcher, answered] {
        watcher->deleteLater();
        answered(*watcher);
    });
}

} // namespace

LinuxBanners::LinuxBanners(QObject *parent) : QObject(parent) {}

void LinuxBanners::show(const QString &title, const QString &body, std::function<void()> handedOver)
{
    const Banner banner{title, body, std::move(handedOver)};
    if (m_markup) {
        send(banner);
        return;
    }
    m_waiting.append(banner);
    if (m_waiting.size() > maximumWaiting) {
        const Banner dropped = m_waiting.takeFirst();
        if (dropped.handedOver)
            dropped.handedOver();
    }
    if (m_waiting.size() == 1)
        askCapabilities();
}

void LinuxBanners::askCapabilities()
{
    call(this, daemonCall(u"GetCapabilities"_s), [this](const QDBusPendingCall &answer) {
        const QDBusPendingReply<QStringList> capabilities = answer;
        // A daemon that does not tell is taken for one that parses: a visible "&lt;" harms nobody.
        const bool isShown = !capabilities.isError() && !capabilities.value().contains(u"body-markup"_s);
        m_markup = isShown ? BodyMarkup::shown : BodyMarkup::parsed;
        for (const Banner &banner : std::exchange(m_waiting, {}))
            send(banner);
        if (capabilities.isError())
            m_markup.reset();
    });
}

void LinuxBanners::send(const Banner &banner)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!std::exchange(m_listens, true)) {
        bus.connect(daemon, daemonPath, daemon, u"ActionInvoked"_s, this, SLOT(actionInvoked(uint, QString)));
        bus.connect(daemon, daemonPath, daemon, u"ActivationToken"_s, this,
                    SLOT(activationToken(uint, QString)));
        bus.connect(daemon, daemonPath, daemon, u"NotificationClosed"_s, this,
                    SLOT(notificationClosed(uint, uint)));
    }
    // We play our own sounds, also where nobody shows banners.
    const QVariantMap hints{{u"desktop-entry"_s, u"morvane"_s}, {u"suppress-sound"_s, true}};
    QDBusMessage message = daemonCall(u"Notify"_s);
    message.setArguments({u"Morvane"_s, uint(0), u"morvane"_s, bannerTitle(banner.title),
                          bannerBody(banner.body, m_markup.value_or(BodyMarkup::parsed)),
                          QStringList{defaultAction, u"Open"_s}, hints, -1});
    call(this, message, [this, handedOver = banner.handedOver](const QDBusPendingCall &answer) {
        const QDBusPendingReply<uint> id = answer;
        if (id.isError()) {
            qCWarning(platformLog) << "a banner was not shown:" << id.error().name();
            m_markup.reset(); // Another daemon may come.
        } else {
            remember(id.value());
        }
        if (handedOver)
            handedOver();
    });
}

void LinuxBanners::findDaemon(std::function<void(bool)> answer)
{
    QDBusMessage question = busCall(u"NameHasOwner"_s);
    question.setArguments({daemon});
    call(this, question, [this, answer = std::move(answer)](const QDBusPendingCall &reply) {
        const QDBusPendingReply<bool> runs = reply;
        if (runs.isError() || runs.value()) {
            answer(!runs.isError());
            return;
        }
        call(this, busCall(u"ListActivatableNames"_s), [answer](const QDBusPendingCall &namesReply) {
            const QDBusPendingReply<QStringList> names = namesReply;
            answer(!names.isError() && names.value().contains(daemon));
        });
    });
}

void LinuxBanners::remember(uint id)
{
    m_shown.removeAll(id);
    m_shown.append(id);
    if (m_shown.size() > maximumShown)
        m_shown.removeFirst();
}

void LinuxBanners::activationToken(uint id, const QString &token)
{
    if (!m_shown.contains(id) || token.size() > maximumToken)
        return;
    m_tokenOwner = id;
    m_token = token;
}

void LinuxBanners::actionInvoked(uint id, const QString &action)
{
    if (!m_shown.contains(id) || action != defaultAction)
        return;
    const QString token = std::exchange(m_token, {});
    Q_EMIT chosen({.startupID = {}, .xdgToken = m_tokenOwner == id ? token.toUtf8() : QByteArray()});
}

void LinuxBanners::notificationClosed(uint id, uint)
{
    m_shown.removeAll(id);
}

} // namespace morvane
