#include "base/ReferenceDate.h"

#include <QTimeZone>
#include <gtest/gtest.h>
#include <limits>

namespace morvane {
namespace {

TEST(ReferenceDateTest, CountsFromTheStartOf2001)
{
    EXPECT_EQ(referenceDateFromDateTime(QDateTime({2001, 1, 1}, {0, 0}, Qt::UTC)), 0.0);
    EXPECT_EQ(referenceDateFromDateTime(QDateTime({2001, 1, 2}, {0, 0, 0, 250}, Qt::UTC)), 86'400.25);
    EXPECT_EQ(referenceDateFromDateTime(QDateTime({1970, 1, 1}, {0, 0}, Qt::UTC)), -978'307'200.0);
}

TEST(ReferenceDateTest, GivesThePointInTimeBack)
{
    const QDateTime time({2026, 2, 28}, {23, 59, 59, 999}, Qt::UTC);
    EXPECT_EQ(dateTimeFromReferenceDate(referenceDateFromDateTime(time)), time);
    EXPECT_EQ(dateTimeFromReferenceDate(-978'307'200.0).toMSecsSinceEpoch(), 0);
}

TEST(ReferenceDateTest, NowIsTheSystemTime)
{
    const QDateTime before = QDateTime::currentDateTimeUtc();
    const QDateTime now = dateTimeFromReferenceDate(referenceDateNow());
    const QDateTime after = QDateTime::currentDateTimeUtc();
    EXPECT_GE(now, before.addMSecs(-1));
    EXPECT_LE(now, after.addMSecs(1));
}

TEST(ReferenceDateTest, WhatNoCalendarHoldsIsInvalid)
{
    EXPECT_FALSE(dateTimeFromReferenceDate(1e300).isValid());
    EXPECT_FALSE(dateTimeFromReferenceDate(-1e300).isValid());
    EXPECT_FALSE(dateTimeFromReferenceDate(std::numeric_limits<double>::quiet_NaN()).isValid());
    EXPECT_FALSE(dateTimeFromReferenceDate(std::numeric_limits<double>::infinity()).isValid());
}

} // namespace
} // namespace morvane
