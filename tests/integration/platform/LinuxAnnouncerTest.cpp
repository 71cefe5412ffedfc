#include "platform/linux/LinuxAnnouncer.h"

#include "platform/linux/SpokenText.h"
#include "support/AccessibilityBus.h"
#include "support/AnnouncementRecorder.h"
#include "support/WaitUntil.h"

#include <QWidget>
#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

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
        m_window.setWindowTitle(u"Announcing window"_s);
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
    announcer.announce(u"Morvane is responding."_s);
    announcer.announce(u"Done."_s);
    ASSERT_TRUE(reader.hears(u"Done."_s));
    EXPECT_THAT(reader.heard(), ElementsAre(u"Morvane is responding."_s, u"Done."_s));
    m_bus.deregisterEvents();
}

TEST_F(LinuxAnnouncerTest, AnOlderReaderHearsNotificationsInstead)
{
    const AnnouncementRecorder reader(m_bus, Hearing::notifications);
    LinuxAnnouncer announcer;
    ASSERT_TRUE(needsBecome({.announcements = false, .notifications = true}));
    announcer.announce(u"Morvane is responding."_s);
    announcer.announce(u"Done."_s);
    ASSERT_TRUE(reader.hears(u"Done."_s));
    EXPECT_THAT(reader.heard(), ElementsAre(u"Morvane is responding."_s, u"Done."_s));
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
            said.append(u"Announcement number %1."_s.arg(i));
            announcer.announce(said.constLast());
        }
        ASSERT_TRUE(reader.hearsCount(said.size()));
        EXPECT_EQ(reader.heard(), said);
        m_bus.deregisterEvents();
    }
}

TEST_F(LinuxAnnouncerTest, AReaderThatAsksLateStillFindsTheText)
{
    m_bus.registerEvent(u"object:state-changed:showing"_s);
    LinuxAnnouncer announcer;
    ASSERT_TRUE(needsBecome({.announcements = false, .notifications = true}));
    QList<AccessibleElement> shown;
    QObject::connect(&m_bus, &AccessibilityBus::eventReceived, &m_window, [&](const QDBusMessage &event) {
        shown.append(AccessibleElement(m_bus, event.service(), event.path()));
    });
    for (int i = 0; i < 10; ++i)
        announcer.announce(u"Text %1"_s.arg(i));
    ASSERT_TRUE(waitUntil([&] { return shown.size() >= 10; }));
    QStringList names;
    for (const AccessibleElement &element : shown)
        if (element.role() == AccessibleRole::notification)
            names.append(element.name());
    EXPECT_EQ(names.size(), 10);
    EXPECT_EQ(names.first(), u"Text 0"_s);
    EXPECT_EQ(names.last(), u"Text 9"_s);
    m_bus.deregisterEvents();
}

TEST_F(LinuxAnnouncerTest, ANoticeComesBehindWhatTheSameTurnTells)
{
    m_bus.registerEvent(u"object:state-changed"_s);
    LinuxAnnouncer announcer;
    QList<AccessibleElement> told;
    QObject::connect(&m_bus, &AccessibilityBus::eventReceived, &m_window, [&](const QDBusMessage &event) {
        told.append(AccessibleElement(m_bus, event.service(), event.path()));
    });
    const auto noticeAt = [&] {
        for (qsizetype i = 0; i < told.size(); ++i)
            if (told.at(i).role() == AccessibleRole::notification)
                return i;
        return qsizetype(-1);
    };
    announcer.announce(u"Held until the announcer knows its listeners."_s);
    ASSERT_TRUE(waitUntil([&] { return noticeAt() >= 0; }));

    told.clear();
    QList<QWidget *> parts;
    for (int i = 0; i < 10; ++i)
        parts.append(new QWidget(&m_window));
    announcer.announce(u"Heard at the end."_s);
    for (QWidget *part : parts)
        part->show();
    ASSERT_TRUE(waitUntil([&] { return told.size() > parts.size(); }));
    EXPECT_GE(noticeAt(), parts.size());
    m_bus.deregisterEvents();
}

TEST_F(LinuxAnnouncerTest, WhatIsSaidBeforeTheReaderIsKnownIsSpokenAfterwards)
{
    const AnnouncementRecorder reader(m_bus, Hearing::announcements);
    LinuxAnnouncer announcer;
    announcer.announce(u"Said at once."_s);
    EXPECT_TRUE(reader.hears(u"Said at once."_s));
    m_bus.deregisterEvents();
}

TEST_F(LinuxAnnouncerTest, WithoutAListenerNothingIsSent)
{
    LinuxAnnouncer announcer;
    ASSERT_TRUE(needsBecome({}));
    QStringList seen;
    QObject::connect(&m_bus, &AccessibilityBus::eventReceived, &m_window,
                     [&](const QDBusMessage &event) { seen.append(event.member()); });
    announcer.announce(u"Nobody listens."_s);
    // What comes next on the same road shows that the first was not sent.
    m_bus.registerEvent(u"object:announcement"_s);
    ASSERT_TRUE(needsBecome({.announcements = true, .notifications = false}));
    announcer.announce(u"Now someone does."_s);
    ASSERT_TRUE(waitUntil([&] { return seen.contains(u"Announcement"_s); }));
    EXPECT_EQ(seen.count(u"Announcement"_s), 1);
    m_bus.deregisterEvents();
}

TEST_F(LinuxAnnouncerTest, AReaderThatGoesIsForgotten)
{
    m_bus.registerEvent(u"object:announcement"_s);
    ASSERT_TRUE(needsBecome({.announcements = true, .notifications = false}));
    m_bus.deregisterEvents();
    EXPECT_TRUE(needsBecome({}));
}

TEST_F(LinuxAnnouncerTest, AReaderThatDiesIsForgotten)
{
    auto dying = std::make_unique<AccessibilityBus>(sessionBus());
    dying->registerEvent(u"object:announcement"_s);
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
    announcer.announce(u"To both."_s);
    EXPECT_TRUE(modern.hears(u"To both."_s));
    EXPECT_TRUE(older.hears(u"To both."_s));
    m_bus.deregisterEvents();
    other.deregisterEvents();
    ASSERT_TRUE(needsBecome({}));
}

TEST_F(LinuxAnnouncerTest, HostileTextNeitherBreaksTheBusNorTheNextAnnouncement)
{
    const AnnouncementRecorder reader(m_bus, Hearing::announcements);
    LinuxAnnouncer announcer;
    ASSERT_TRUE(needsBecome({.announcements = true, .notifications = false}));
    announcer.announce(u"nul"_s + QChar(0) + u"inside"_s);
    announcer.announce(QString(QChar(0xd800)) + u"lone"_s + QChar(0xdfff));
    announcer.announce(QString(QChar(0xfffe)) + QChar(0xffff));
    announcer.announce(QString());
    announcer.announce(u"still here"_s);
    ASSERT_TRUE(reader.hears(u"still here"_s));
    EXPECT_EQ(reader.heard().first(), u"nul inside"_s);
    EXPECT_EQ(reader.heard().at(1), QChar(0xfffd) + u"lone"_s + QChar(0xfffd));
    EXPECT_TRUE(ScreenReaderWatch::bus().isConnected());
    m_bus.deregisterEvents();
}

TEST_F(LinuxAnnouncerTest, AVeryLongTextArrivesWholeInOrder)
{
    const QString text = u"This is one of a great many sentences. "_s.repeated(3000);
    for (const Hearing hearing : {Hearing::announcements, Hearing::notifications}) {
        const AnnouncementRecorder reader(m_bus, hearing);
        LinuxAnnouncer announcer;
        const bool isModern = hearing == Hearing::announcements;
        ASSERT_TRUE(needsBecome({.announcements = isModern, .notifications = !isModern}));
        announcer.announce(text);
        announcer.announce(u"the end"_s);
        ASSERT_TRUE(reader.hears(u"the end"_s));
        EXPECT_TRUE(reader.heard().join(QString()) == text + u"the end"_s);
        m_bus.deregisterEvents();
    }
}

TEST_F(LinuxAnnouncerTest, ATextOfDaysEndsWithAMarkAndHoldsUpNothing)
{
    const AnnouncementRecorder reader(m_bus, Hearing::announcements);
    LinuxAnnouncer announcer;
    ASSERT_TRUE(needsBecome({.announcements = true, .notifications = false}));
    const QString text = u"This is one of a great many sentences. "_s.repeated(100'000);
    announcer.announce(text);
    announcer.announce(u"the end"_s);
    ASSERT_TRUE(reader.hears(u"the end"_s));
    const QString heard = reader.heard().join(QString());
    EXPECT_TRUE(heard.startsWith(text.first(100'000)));
    EXPECT_TRUE(heard.endsWith(u"…the end"_s));
    EXPECT_LT(heard.size(), 200'000);
}

} // namespace
} // namespace morvane
