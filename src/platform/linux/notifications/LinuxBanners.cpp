#include "platform/linux/notifications/LinuxBanners.h"

#include "platform/Log.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QVariantMap>
#include <algorithm>
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

void letGo(const LinuxBanners::Banner &banner)
{
    if (banner.handedOver)
        banner.handedOver();
}

} // namespace

LinuxBanners::LinuxBanners(QObject *parent) : QObject(parent) {}

void LinuxBanners::show(const Banner &banner)
{
    if (const auto before = m_onTheirWay.find(banner.identifier); before != m_onTheirWay.end()) {
        const std::optional<Banner> dropped = std::exchange(*before, banner);
        if (dropped)
            letGo(*dropped);
    } else if (m_markup) {
        send(banner);
    } else {
        hold(banner);
    }
}

void LinuxBanners::hold(const Banner &banner)
{
    const auto same = std::ranges::find(m_waiting, banner.identifier, &Banner::identifier);
    if (same != m_waiting.end()) {
        letGo(std::exchange(*same, banner));
        return;
    }
    m_waiting.append(banner);
    if (m_waiting.size() > maximumWaiting)
        letGo(m_waiting.takeFirst());
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

void LinuxBanners::listen()
{
    if (std::exchange(m_listens, true))
        return;
    QDBusConnection bus = QDBusConnection::sessionBus();
    bus.connect(daemon, daemonPath, daemon, u"ActionInvoked"_s, this, SLOT(actionInvoked(uint, QString)));
    bus.connect(daemon, daemonPath, daemon, u"ActivationToken"_s, this, SLOT(activationToken(uint, QString)));
    bus.connect(daemon, daemonPath, daemon, u"NotificationClosed"_s, this,
                SLOT(notificationClosed(uint, uint)));
    // Another daemon counts anew, and would take the number for that of another program's banner.
    const auto *watcher =
        new QDBusServiceWatcher(daemon, bus, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString &, const QString &before) {
                if (before.isEmpty())
                    return; // The one that comes with the first banner is no other.
                m_shown.clear();
                m_markup.reset();
            });
}

void LinuxBanners::send(const Banner &banner)
{
    listen();
    const auto before = std::ranges::find(m_shown, banner.identifier, &Shown::identifier);
    const uint replaced = before == m_shown.end() ? 0 : before->id;
    m_onTheirWay.insert(banner.identifier, std::nullopt);
    // We play our own sounds, also where nobody shows banners.
    const QVariantMap hints{{u"desktop-entry"_s, u"morvane"_s}, {u"suppress-sound"_s, true}};
    QDBusMessage message = daemonCall(u"Notify"_s);
    message.setArguments({u"Morvane"_s, replaced, u"morvane"_s, bannerTitle(banner.title),
                          bannerBody(banner.body, m_markup.value_or(BodyMarkup::parsed)),
                          QStringList{defaultAction, u"Open"_s}, hints, -1});
    call(this, message, [this, banner](const QDBusPendingCall &answer) {
        const QDBusPendingReply<uint> id = answer;
        if (id.isError()) {
            qCWarning(platformLog) << "a banner was not shown:" << id.error().name();
            m_markup.reset(); // Another daemon may come.
        } else {
            remember({id.value(), banner.identifier});
        }
        const std::optional<Banner> next = m_onTheirWay.take(banner.identifier);
        letGo(banner);
        if (next)
            show(*next);
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

void LinuxBanners::remember(const Shown &shown)
{
    m_shown.removeIf([&shown](const Shown &known) {
        return known.id == shown.id || known.identifier == shown.identifier;
    });
    m_shown.append(shown);
    if (m_shown.size() > maximumShown)
        m_shown.removeFirst();
}

bool LinuxBanners::knows(uint id) const
{
    return std::ranges::find(m_shown, id, &Shown::id) != m_shown.end();
}

void LinuxBanners::activationToken(uint id, const QString &token)
{
    if (!knows(id) || token.size() > maximumToken)
        return;
    m_tokenOwner = id;
    m_token = token;
}

void LinuxBanners::actionInvoked(uint id, const QString &action)
{
    if (!knows(id) || action != defaultAction)
        return;
    const QString token = std::exchange(m_token, {});
    Q_EMIT chosen({.startupID = {}, .xdgToken = m_tokenOwner == id ? token.toUtf8() : QByteArray()});
}

void LinuxBanners::notificationClosed(uint id, uint)
{
    m_shown.removeIf([id](const Shown &shown) { return shown.id == id; });
}

} // namespace morvane
