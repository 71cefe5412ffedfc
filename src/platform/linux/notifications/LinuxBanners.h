#pragma once

#include "platform/SingleInstance.h"
#include "platform/linux/notifications/BannerText.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <functional>
#include <optional>

class QDBusPendingCallWatcher;

namespace morvane {

/// Shows banners through the desktop's notification daemon (`org.freedesktop.Notifications`, version 1.2) and
/// tells when the user chooses one. Nothing waits for the daemon: without one nothing is shown, and what a
/// strange one answers is not believed. Main thread; needs the application object.
class LinuxBanners : public QObject {
    Q_OBJECT
public:
    struct Banner {
        QString identifier;
        QString title;
        QString body;
        /// Called when the daemon has taken it or nobody did, unless this object goes first.
        std::function<void()> handedOver = {};
    };

    explicit LinuxBanners(QObject *parent = nullptr);

    /// Hands a banner to the daemon, starting it where D-Bus knows how. It takes the place of the one with
    /// the same identifier that is shown, or that still waits for the daemon.
    void show(const Banner &banner);

    /// Tells whether there is, or could be started, a daemon.
    void findDaemon(std::function<void(bool isThere)> answer);

Q_SIGNALS:
    /// The user chose a banner of ours; with what the desktop left for the window that is to come to the
    /// front.
    void chosen(const morvane::ActivationToken &token);

private Q_SLOTS:
    void actionInvoked(uint id, const QString &action);
    void activationToken(uint id, const QString &token);
    void notificationClosed(uint id, uint reason);

private:
    struct Shown {
        uint id = 0;
        QString identifier;
    };

    void listen();
    void hold(const Banner &banner);
    void askCapabilities();
    void send(const Banner &banner);
    bool knows(uint id) const;
    void remember(const Shown &shown);

    std::optional<BodyMarkup> m_markup; ///< Nothing until the daemon has told.
    QList<Banner> m_waiting;            ///< For its answer.
    bool m_listens = false;
    /// By the identifiers of those that the daemon has not numbered yet: what comes behind each, if anything.
    QHash<QString, std::optional<Banner>> m_onTheirWay;
    QList<Shown> m_shown; ///< The newest last.
    uint m_tokenOwner = 0;
    QString m_token;
};

} // namespace morvane
