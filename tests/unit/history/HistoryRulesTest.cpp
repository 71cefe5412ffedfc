#include "browser/history/HistoryRules.h"

#include "base/ReferenceDate.h"
#include "base/Uuid.h"

#include <ctime>
#include <gtest/gtest.h>
#include <limits>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

constexpr double now = 8e8;
constexpr double day = 86'400;

using History = QList<BrowserHistoryEntry>;

BrowserHistoryEntry entryAt(double visitedAt, const QString &url = u"https://old.test/"_s)
{
    return {newUuid(), u"Old"_s, url, u"old.test"_s, visitedAt, 1};
}

/// Another time zone, as long as it lives.
class TimeZone {
public:
    explicit TimeZone(const QByteArray &name)
        : m_before(qgetenv("TZ")), m_wasSet(qEnvironmentVariableIsSet("TZ"))
    {
        qputenv("TZ", name);
        tzset();
    }
    ~TimeZone()
    {
        m_wasSet ? qputenv("TZ", m_before) : qunsetenv("TZ");
        tzset();
    }
    TimeZone(const TimeZone &) = delete;
    TimeZone &operator=(const TimeZone &) = delete;

private:
    QByteArray m_before;
    bool m_wasSet;
};

TEST(HistoryRulesTest, AVisitComesInFrontWithItsHost)
{
    History history;
    EXPECT_TRUE(recordVisit(history, u"https://a.test/x"_s, u"A"_s, now));
    EXPECT_TRUE(recordVisit(history, u"http://b.test:8080/"_s, u"B"_s, now + 1));
    ASSERT_EQ(history.size(), 2);
    EXPECT_EQ(history[0].host, u"b.test"_s);
    EXPECT_EQ(history[0].visitedAt, now + 1);
    EXPECT_EQ(history[1].url, u"https://a.test/x"_s);
    EXPECT_EQ(history[1].title, u"A"_s);
    EXPECT_EQ(history[1].visitCount, 1);
    EXPECT_NE(history[0].id, history[1].id);
}

TEST(HistoryRulesTest, WhatHasNoHostOrIsNotOfTheWebLeavesNoTrace)
{
    History history;
    for (const QString &url :
         {u""_s, u"about:blank"_s, u"data:text/html;charset=UTF-8,x"_s, u"file:///etc/passwd"_s,
          u"ftp://a.test/"_s, u"https:///x"_s, u"a.test"_s, u"//a.test/x"_s})
        EXPECT_FALSE(recordVisit(history, url, u"T"_s, now)) << qPrintable(url);
    EXPECT_TRUE(history.isEmpty());
}

TEST(HistoryRulesTest, AReloadWithinTenSecondsIsTheSameVisit)
{
    History history;
    recordVisit(history, u"https://a.test/"_s, u"A"_s, now);
    recordVisit(history, u"https://b.test/"_s, u"B"_s, now + 1);
    const QUuid id = history[1].id;
    recordVisit(history, u"https://a.test/"_s, u"A, again"_s, now + 9.9);
    ASSERT_EQ(history.size(), 2);
    EXPECT_EQ(history[0].id, id);
    EXPECT_EQ(history[0].visitCount, 2);
    EXPECT_EQ(history[0].visitedAt, now + 9.9);
    EXPECT_EQ(history[0].title, u"A, again"_s);
    EXPECT_EQ(history[1].url, u"https://b.test/"_s);
}

TEST(HistoryRulesTest, AVisitAfterTenSecondsIsAnother)
{
    History history;
    recordVisit(history, u"https://a.test/"_s, u"A"_s, now);
    recordVisit(history, u"https://a.test/"_s, u"A"_s, now + 10);
    ASSERT_EQ(history.size(), 2);
    EXPECT_EQ(history[0].visitCount, 1);
    EXPECT_EQ(history[0].visitedAt, now + 10);
}

TEST(HistoryRulesTest, OnlyTheNewestEntryOfAnAddressIsCounted)
{
    History history;
    recordVisit(history, u"https://a.test/"_s, u"first"_s, now);
    recordVisit(history, u"https://a.test/"_s, u"second"_s, now + 20);
    recordVisit(history, u"https://a.test/"_s, u"third"_s, now + 25);
    ASSERT_EQ(history.size(), 2);
    EXPECT_EQ(history[0].visitCount, 2);
    EXPECT_EQ(history[0].title, u"third"_s);
    EXPECT_EQ(history[1].visitCount, 1);
    EXPECT_EQ(history[1].title, u"first"_s);
    EXPECT_EQ(history[1].visitedAt, now);
}

TEST(HistoryRulesTest, AddressesAreComparedExactly)
{
    History history;
    recordVisit(history, u"https://a.test/"_s, u"A"_s, now);
    recordVisit(history, u"https://a.test/#x"_s, u"A"_s, now);
    recordVisit(history, u"https://a.test/X"_s, u"A"_s, now);
    EXPECT_EQ(history.size(), 3);
}

TEST(HistoryRulesTest, APageWithoutATitleIsRecordedUnderItsHostAndEmptiesOnARepeat)
{
    History history;
    recordVisit(history, u"https://host.test/x"_s, QString(), now);
    EXPECT_EQ(history[0].title, u"host.test"_s);
    recordVisit(history, u"https://host.test/x"_s, QString(), now + 1);
    EXPECT_EQ(history[0].title, QString());
}

TEST(HistoryRulesTest, AHostOfAnotherScriptIsShownAsItIsSent)
{
    History history;
    recordVisit(history, u"https://аpple.test/"_s, QString(), now); // its first letter is Cyrillic
    EXPECT_EQ(history[0].host, u"xn--pple-43d.test"_s);
}

TEST(HistoryRulesTest, AClockThatWasSetBackKeepsTheVisitTheSame)
{
    History history;
    recordVisit(history, u"https://a.test/"_s, u"A"_s, now);
    recordVisit(history, u"https://a.test/"_s, u"A"_s, now - 3600);
    ASSERT_EQ(history.size(), 1);
    EXPECT_EQ(history[0].visitedAt, now - 3600);
}

TEST(HistoryRulesTest, ACountAtItsEndStays)
{
    History history{entryAt(now)};
    history[0].visitCount = std::numeric_limits<qint64>::max();
    recordVisit(history, history[0].url, u"A"_s, now + 1);
    EXPECT_EQ(history[0].visitCount, std::numeric_limits<qint64>::max());
}

TEST(HistoryRulesTest, TheEntryAfterTwoThousandPushesOutTheOldest)
{
    History history;
    for (int i = 0; i < 2000; ++i)
        recordVisit(history, u"https://a.test/%1"_s.arg(i), u"A"_s, now + i);
    ASSERT_EQ(history.size(), 2000);
    EXPECT_EQ(history.last().url, u"https://a.test/0"_s);
    recordVisit(history, u"https://a.test/2000"_s, u"A"_s, now + 2000);
    ASSERT_EQ(history.size(), 2000);
    EXPECT_EQ(history.first().url, u"https://a.test/2000"_s);
    EXPECT_EQ(history.last().url, u"https://a.test/1"_s);
}

TEST(HistoryRulesTest, AnEntryOfNinetyOneDaysAgoDisappearsAtTheNextVisit)
{
    History history{entryAt(now - 1, u"https://new.test/"_s), entryAt(now - 91 * day)};
    recordVisit(history, u"https://a.test/"_s, u"A"_s, now);
    ASSERT_EQ(history.size(), 2);
    EXPECT_EQ(history[1].url, u"https://new.test/"_s);
}

TEST(HistoryRulesTest, NinetyDaysAreCountedByTheUsersCalendar)
{
    const TimeZone zone("CET-1CEST,M3.5.0,M10.5.0/3");
    const QDateTime noon(QDate(2026, 4, 10), QTime(12, 0)); // 90 days before, the clocks told winter time
    const double spring = referenceDateFromDateTime(noon);
    const double winter = spring - 90 * day + 3600;
    History history{entryAt(winter), entryAt(winter - 1)};
    pruneHistory(history, spring);
    ASSERT_EQ(history.size(), 1);
    EXPECT_EQ(history[0].visitedAt, winter);
}

TEST(HistoryRulesTest, PruningKeepsTheOrderOfWhatIsLeft)
{
    History history{entryAt(now - 5), entryAt(now - 91 * day), entryAt(now - 2), entryAt(now + day)};
    const History left{history[0], history[2], history[3]};
    pruneHistory(history, now);
    EXPECT_EQ(history, left);
}

TEST(HistoryRulesTest, ACalendarWithoutADateDropsNothing)
{
    History history{entryAt(-1e300)};
    pruneHistory(history, 1e300);
    EXPECT_EQ(history.size(), 1);
}

TEST(HistoryRulesTest, SearchFindsInTitleAddressAndHostInAnyCase)
{
    History history;
    recordVisit(history, u"https://host.test/"_s, u"One"_s, now);
    recordVisit(history, u"https://other.test/Path"_s, u"Straße"_s, now);
    EXPECT_EQ(searchHistory(history, u"HOST"_s).size(), 1);
    EXPECT_EQ(searchHistory(history, u"pATH"_s).size(), 1);
    EXPECT_EQ(searchHistory(history, u"STRAßE"_s).size(), 1);
    EXPECT_EQ(searchHistory(history, u".test"_s), history);
    EXPECT_TRUE(searchHistory(history, u"nothing"_s).isEmpty());
}

TEST(HistoryRulesTest, SearchTakesTheQueryAsItIsTyped)
{
    History history;
    recordVisit(history, u"https://host.test/"_s, u"One two"_s, now);
    EXPECT_EQ(searchHistory(history, QString()), history);
    EXPECT_EQ(searchHistory(history, u" "_s).size(), 1);
    EXPECT_TRUE(searchHistory(history, u"one "_s + u" two"_s).isEmpty());
    EXPECT_TRUE(searchHistory(history, u".*"_s).isEmpty());
}

TEST(HistoryRulesTest, WhatIsTooLongIsCutOrLeftOut)
{
    History history;
    EXPECT_FALSE(
        recordVisit(history, u"https://a.test/"_s + QString(longestRecordedAddress, u'x'), u"A"_s, now));
    EXPECT_TRUE(recordVisit(history, u"https://a.test/"_s, QString(1'000'000, u'x'), now));
    EXPECT_EQ(history[0].title, QString(longestRecordedTitle, u'x'));
}

} // namespace
} // namespace morvane
