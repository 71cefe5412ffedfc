#include "platform/linux/LinuxAnnouncer.h"

#include "platform/linux/AnnouncementNotice.h"
#include "platform/linux/SpokenText.h"

#include <QDBusMessage>
#include <QDBusVariant>
#include <QGuiApplication>
#include <QWindow>
#include <chrono>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

using namespace std::chrono_literals;

/// ATSPI_LIVE_POLITE: what is being spoken is finished first, so that a burst is heard whole.
constexpr int polite = 1;

/// What was said at start before the accessibility bus answered is still worth hearing for so long.
constexpr auto holdingTime = 5s;
constexpr size_t maximumHeld = 64;

/// Two hours of speech, in UTF-16 units; nobody hears more than that to its end, and cutting it takes time.
constexpr qsizetype longestSpoken = 4 * maximumSpokenLength;

/// A busy reader asks for the text of a notice long after it was told of it, so the newest stay alive.
constexpr size_t maximumNotices = 64;

/// The object that the event comes from: the window that the user works in, or else the program.
QString sourcePath()
{
    const QString folder = u"/org/a11y/atspi/accessible/"_s;
    const QWindow *window = QGuiApplication::focusWindow();
    if (window == nullptr && !QGuiApplication::topLevelWindows().isEmpty())
        window = QGuiApplication::topLevelWindows().constFirst();
    QAccessibleInterface *accessible = window != nullptr ? window->accessibleRoot() : nullptr;
    return folder + (accessible != nullptr ? QString::number(QAccessible::uniqueId(accessible)) : u"root"_s);
}

} // namespace

LinuxAnnouncer::LinuxAnnouncer(QObject *parent) : QObject(parent)
{
    AnnouncementNotice::installAccessibility();
    connect(&m_readers, &ScreenReaderWatch::needsChanged, this, &LinuxAnnouncer::deliverHeld);
}

LinuxAnnouncer::~LinuxAnnouncer() = default;

bool LinuxAnnouncer::isHeard() const
{
    const auto &needs = m_readers.needs();
    return needs && (needs->announcements || needs->notifications);
}

void LinuxAnnouncer::announce(const QString &text)
{
    if (const auto &needs = m_readers.needs()) {
        deliver(text, *needs);
        return;
    }
    if (m_held.size() == maximumHeld)
        m_held.pop_front();
    m_held.push_back({text, QDeadlineTimer(holdingTime)});
}

void LinuxAnnouncer::deliverHeld()
{
    if (const auto &needs = m_readers.needs()) {
        for (const Held &held : std::exchange(m_held, {}))
            if (!held.untilStale.hasExpired())
                deliver(held.text, *needs);
    }
}

void LinuxAnnouncer::deliver(const QString &text, const ScreenReaderNeeds &needs)
{
    if (!needs.announcements && !needs.notifications)
        return;
    const QString spoken = text.size() > longestSpoken ? text.first(longestSpoken) + u'…' : text;
    for (const QString &piece : spokenPieces(spoken)) {
        if (needs.announcements)
            sendAnnouncement(piece);
        // A reader that finds many events waiting behind a notice drops the notice, and what takes the focus
        // cuts off what was said before. So the notice goes behind all that is told in this turn.
        if (needs.notifications)
            QMetaObject::invokeMethod(this, [this, piece] { showNotice(piece); }, Qt::QueuedConnection);
    }
}

void LinuxAnnouncer::sendAnnouncement(const QString &text)
{
    QDBusMessage event =
        QDBusMessage::createSignal(sourcePath(), u"org.a11y.atspi.Event.Object"_s, u"Announcement"_s);
    event << QString() << polite << 0 << QVariant::fromValue(QDBusVariant(text)) << QVariantMap();
    ScreenReaderWatch::bus().send(event);
}

void LinuxAnnouncer::showNotice(const QString &text)
{
    if (m_notices.size() == maximumNotices)
        m_notices.pop_front();
    m_notices.push_back(std::make_unique<AnnouncementNotice>(text));
    m_notices.back()->show();
}

} // namespace morvane
