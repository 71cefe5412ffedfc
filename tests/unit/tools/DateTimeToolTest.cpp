#include "tools/DateTimeTool.h"

#include <QLocale>
#include <QTimeZone>
#include <gtest/gtest.h>

namespace morvane {
namespace {

QString described(const QDate &date, const QTime &time, const char *zone)
{
    return DateTimeTool::describeDateTime(QDateTime(date, time, QTimeZone(zone)));
}

TEST(DateTimeToolTest, TellsDayDateTimeAndZone)
{
    EXPECT_EQ(described({2026, 3, 5}, {9, 7}, "Europe/Berlin"),
              "The current date and time is Thursday, March 5, 2026 at 9:07 AM in Europe/Berlin.");
}

TEST(DateTimeToolTest, CountsTwelveHours)
{
    EXPECT_EQ(described({2024, 12, 31}, {0, 0}, "UTC"),
              "The current date and time is Tuesday, December 31, 2024 at 12:00 AM in UTC.");
    EXPECT_EQ(described({2024, 12, 31}, {12, 5}, "Asia/Tokyo"),
              "The current date and time is Tuesday, December 31, 2024 at 12:05 PM in Asia/Tokyo.");
    EXPECT_EQ(described({2024, 12, 31}, {23, 59}, "UTC"),
              "The current date and time is Tuesday, December 31, 2024 at 11:59 PM in UTC.");
}

TEST(DateTimeToolTest, SpeaksEnglishWhateverTheLocale)
{
    QLocale::setDefault(QLocale(QLocale::German));
    const QString text = described({2026, 5, 1}, {15, 30}, "UTC");
    QLocale::setDefault(QLocale::system());
    EXPECT_EQ(text, "The current date and time is Friday, May 1, 2026 at 3:30 PM in UTC.");
}

TEST(DateTimeToolTest, TheCurrentMomentIsInTheSystemsZone)
{
    // The minute may turn between the two readings.
    const QTimeZone zone = QTimeZone::systemTimeZone();
    const QString before = DateTimeTool::describeDateTime(QDateTime::currentDateTimeUtc().toTimeZone(zone));
    const QString now = DateTimeTool::currentDateTime();
    const QString after = DateTimeTool::describeDateTime(QDateTime::currentDateTimeUtc().toTimeZone(zone));
    EXPECT_TRUE(now == before || now == after) << now.toStdString();
    EXPECT_TRUE(now.endsWith(" in " + QString::fromUtf8(QTimeZone::systemTimeZoneId()) + "."))
        << now.toStdString();
}

} // namespace
} // namespace morvane
