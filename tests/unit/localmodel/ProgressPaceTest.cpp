#include "localmodel/ProgressPace.h"

#include "support/FakeClock.h"

#include <QStringList>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

using namespace std::chrono_literals;

namespace morvane {
namespace {

class ProgressPaceTest : public testing::Test {
protected:
    FakeClock clock;
    QStringList shown;
    ProgressPace pace{clock, [this](const QString &label, std::optional<double>) { shown.append(label); }};
};

TEST_F(ProgressPaceTest, TenTimesASecondIsEnough)
{
    for (int report = 0; report < 1000; ++report) {
        pace.report(QString::number(report), std::nullopt);
        clock.advance(1ms);
    }
    EXPECT_LE(shown.size(), 11);
    EXPECT_GE(shown.size(), 9);
}

TEST_F(ProgressPaceTest, TheNewestComesInTheEnd)
{
    pace.report(u"first"_s, std::nullopt);
    pace.report(u"second"_s, std::nullopt);
    pace.report(u"third"_s, std::nullopt);
    EXPECT_EQ(shown, QStringList(u"first"_s));
    clock.advance(99ms);
    EXPECT_EQ(shown, QStringList(u"first"_s));
    clock.advance(1ms);
    EXPECT_EQ(shown, QStringList({u"first"_s, u"third"_s}));
    clock.advance(1h);
    EXPECT_EQ(shown.size(), 2);
}

TEST_F(ProgressPaceTest, WhatIsTheSameIsNotToldAgain)
{
    pace.report(u"same"_s, 0.5);
    clock.advance(1s);
    pace.report(u"same"_s, 0.5);
    EXPECT_EQ(shown.size(), 1);
    clock.advance(1s);
    pace.report(u"same"_s, 0.6);
    EXPECT_EQ(shown.size(), 2);
}

TEST_F(ProgressPaceTest, NothingComesAfterTheWork)
{
    {
        ProgressPace ended(clock,
                           [this](const QString &label, std::optional<double>) { shown.append(label); });
        ended.report(u"first"_s, std::nullopt);
        ended.report(u"second"_s, std::nullopt);
    }
    clock.advance(1s);
    EXPECT_EQ(shown, QStringList(u"first"_s));
}

} // namespace
} // namespace morvane
