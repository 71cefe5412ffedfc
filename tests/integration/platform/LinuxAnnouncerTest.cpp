#include "platform/linux/LinuxAnnouncer.h"

#include "platform/linux/SpokenText.h"
#include "support/AccessibilityBus.h"
#include "support/AnnouncementRecorder.h"
#include "support/WaitUntil.h"

#include <QWidget>
#include <gmock/gmock.h>

namespace morvane {
namespace {

using Hearing = AnnouncementRecorder::Hearing;
using testing::ElementsAre;

QString sessionBus()
{
    return qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
}

class LinuxAnnouncerTest : public testing::Test {
protected:
    LinuxAnnouncerTest()
    {
        m_window.setWindowTitle(QStringLiteral("Announcing window"));
        m_window.show();
    }

    bool needsBecome(const ScreenReaderNeeds &needs)
    {
        return waitUntil([&] { return m_watch.needs() == needs; });
    }

    AccessibilityBus m_bus{sessionBus()};
    QWidget m_window;
    ScreenReaderWatch m_watch;
};

TEST_F(LinuxAnnouncerTest, AReaderThatKnowsAnnouncementsHearsThemOnce)
{
    const AnnouncementRecorder reader(m_bus, Hearing::announcements);
    LinuxAnnouncer announcer;
    ASSERT_TRUE(needsBecome({.announcements = true, .notifications = false}));
    announcer.announce(QStringLiteral("Morvane is responding."));
    announcer.announce(QStringLiteral("Done."));
    ASSERT_TRUE(reader.hears(QStringLiteral("Done.")));
    EXPECT_THAT(reader.heard(),
                ElementsAre(QStringLiteral("Morvane is responding."), QStringLiteral("Done.")));
    m_bus.deregisterEvents();
}

TEST_F(LinuxAnnouncerTest, AnOlderReaderHearsNotificationsInstead)
{
    const AnnouncementRecorder reader(m_bus, Hearing::notifications);
    LinuxAnnouncer announcer;
    ASSERT_TRUE(needsBecome({.announcements = false, .notifications = true}));
    announcer.announce(QStringLiteral("Morvane is responding."));
    announcer.announce(QStringLiteral("Done."));
    ASSERT_TRUE(reader.hears(QStringLiteral("Done.")));
    EXPECT_THAT(reader.heard(),
                ElementsAre(QStringLiteral("Morvane is responding."), QStringLiteral("Done.")));
    m_bus.deregisterEvents();
}

TEST_F(LinuxAnnouncerTest, ABurstKeepsItsOrderAndLosesNothing)
{
    for (const Hearing hearing : {Hearing::announcements, Hearing::notifications}) {
        const AnnouncementRecorder reader(m_bus, hearing);
        LinuxAnnouncer announcer;
        const bool isModern = hearing == Hearing::announcements;
        ASSERT_TRUE(needsBecome({.announcements = isModern, .notifications = !isModern}));
        QStringList said;
        for (int i = 0; i < 50; ++i) {
            said.append(QStringLiteral("Announcement number %1.").arg(i));
            announcer.announce(said.constLast());
        }
        ASSERT_TRUE(reader.hearsCount(said.size()));
        EXPECT_EQ(reader.heard(), said);
        m_bus.deregisterEvents();
    }
}

TEST_F(LinuxAnnouncerTest, AReaderThatAsksLateStillFindsTheText)
{
    m_bus.registerEvent(QStringLiteral("object:state-changed:showing"));
    LinuxAnnouncer announcer;
    ASSERT_TRUE(needsBecome({.announcements = false, .notifications = true}));
    QList<AccessibleElement> shown;
    QObject::connect(&m_bus, &AccessibilityBus::eventReceived, &m_window, [&](const QDBusMessage &event) {
        shown.append(AccessibleElement(m_bus, event.service(), event.path()));
    });
    for (int i = 0; i < 10; ++i) {
        announcer.announce(QStringLiteral("Text %1").arg(i));
    }
    ASSERT_TRUE(waitUntil([&] { return shown.size() >= 10; }));
    QStringList names;
    for (const AccessibleElement &element : shown) {
        if (element.role() == AccessibleRole::notification) {
            names.append(element.name());
        }
    }
    EXPECT_EQ(names.size(), 10);
    EXPECT_EQ(names.first(), QStringLiteral("Text 0"));
    EXPECT_EQ(names.last(), QStringLiteral("Text 9"));
    m_bus.deregisterEvents();
}

TEST_F(LinuxAnnouncerTest, WhatIsSaidBeforeTheReaderIsKnownIsSpokenAfterwards)
{
    const AnnouncementRecorder reader(m_bus, Hearing::announcements);
    LinuxAnnouncer announcer;
    announcer.announce(QStringLiteral("Said at once."));
    EXPECT_TRUE(reader.hears(QStringLiteral("Said at once.")));
    m_bus.deregisterEvents();
}

TEST_F(LinuxAnnouncerTest, WithoutAListenerNothingIsSent)
{
    LinuxAnnouncer announcer;
    ASSERT_TRUE(needsBecome({}));
    QStringList seen;
    QObject::connect(&m_bus, &AccessibilityBus::eventReceived, &m_window,
                     [&](const QDBusMessage &event) { seen.append(event.member()); });
    announcer.announce(QStringLiteral("Nobody listens."));
    // What comes next on the same road shows that the first was not sent.
    m_bus.registerEvent(QStringLiteral("object:announcement"));
    ASSERT_TRUE(needsBecome({.announcements = true, .notifications = false}));
    announcer.announce(QStringLiteral("Now someone does."));
    ASSERT_TRUE(waitUntil([&] { return seen.contains(QStringLiteral("Announcement")); }));
    EXPECT_EQ(seen.count(QStringLiteral("Announcement")), 1);
    m_bus.deregisterEvents();
}

TEST_F(LinuxAnnouncerTest, AReaderThatGoesIsForgotten)
{
    m_bus.registerEvent(QStringLiteral("object:announcement"));
    ASSERT_TRUE(needsBecome({.announcements = true, .notifications = false}));
    m_bus.deregisterEvents();
    EXPECT_TRUE(needsBecome({}));
}

TEST_F(LinuxAnnouncerTest, AReaderThatDiesIsForgotten)
{
    auto dying = std::make_unique<AccessibilityBus>(sessionBus());
    dying->registerEvent(QStringLiteral("object:announcement"));
    ASSERT_TRUE(needsBecome({.announcements = true, .notifications = false}));
    dying.reset();
    EXPECT_TRUE(needsBecome({}));
}

TEST_F(LinuxAnnouncerTest, AModernAndAnOlderReaderAreBothServed)
{
    AccessibilityBus other(sessionBus());
    const AnnouncementRecorder modern(m_bus, Hearing::announcements);
    const AnnouncementRecorder older(other, Hearing::notifications);
    LinuxAnnouncer announcer;
    ASSERT_TRUE(needsBecome({.announcements = true, .notifications = true}));
    announcer.announce(QStringLiteral("To both."));
    EXPECT_TRUE(modern.hears(QStringLiteral("To both.")));
    EXPECT_TRUE(older.hears(QStringLiteral("To both.")));
    m_bus.deregisterEvents();
    other.deregisterEvents();
    ASSERT_TRUE(needsBecome({}));
}

TEST_F(LinuxAnnouncerTest, HostileTextNeitherBreaksTheBusNorTheNextAnnouncement)
{
    const AnnouncementRecorder reader(m_bus, Hearing::announcements);
    LinuxAnnouncer announcer;
    ASSERT_TRUE(needsBecome({.announcements = true, .notifications = false}));
    announcer.announce(QStringLiteral("nul") + QChar(0) + QStringLiteral("inside"));
    announcer.announce(QString(QChar(0xd800)) + QStringLiteral("lone") + QChar(0xdfff));
    announcer.announce(QString(QChar(0xfffe)) + QChar(0xffff));
    announcer.announce(QString());
    announcer.announce(QStringLiteral("still here"));
    ASSERT_TRUE(reader.hears(QStringLiteral("still here")));
    EXPECT_EQ(reader.heard().first(), QStringLiteral("nul inside"));
    EXPECT_EQ(reader.heard().at(1), QChar(0xfffd) + QStringLiteral("lone") + QChar(0xfffd));
    EXPECT_TRUE(ScreenReaderWatch::bus().isConnected());
    m_bus.deregisterEvents();
}

TEST_F(LinuxAnnouncerTest, AVeryLongTextArrivesWholeInOrder)
{
    const QString text = QStringLiteral("This is one of a great many sentences. ").repeated(100'000);
    for (const Hearing hearing : {Hearing::announcements, Hearing::notifications}) {
        const AnnouncementRecorder reader(m_bus, hearing);
        LinuxAnnouncer announcer;
        const bool isModern = hearing == Hearing::announcements;
        ASSERT_TRUE(needsBecome({.announcements = isModern, .notifications = !isModern}));
        announcer.announce(text.first(39 * 20'000));
        announcer.announce(QStringLiteral("the end"));
        ASSERT_TRUE(reader.hears(QStringLiteral("the end")));
        EXPECT_EQ(reader.heard().join(QString()), text.first(39 * 20'000) + QStringLiteral("the end"));
        m_bus.deregisterEvents();
    }
}

} // namespace
} // namespace morvane
