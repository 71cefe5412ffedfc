#include "browser/tabs/PermissionQuestions.h"

#include "BrowserFixture.h"
#include "support/FakePagePermission.h"

namespace morvane {
namespace {

using Kind = PagePermission::Kind;

class PermissionQuestionsTest : public BrowserFixture {
protected:
    PermissionQuestionsTest()
    {
        manager.makeWindowIfNeeded();
        spoken();
    }

    std::shared_ptr<FakePagePermission> want(Kind kind, const QString &site = "a.test")
    {
        auto wish = std::make_shared<FakePagePermission>(kind, site);
        Q_EMIT page().permissionRequested(wish);
        return wish;
    }
    /// The user answers the question that was asked last.
    void answer(bool isGranted) { window.permissionAnswers.last()(isGranted); }
    qsizetype asked() const { return window.permissions.size(); }
};

const QStringList granted("granted");
const QStringList refused("refused");

TEST_F(PermissionQuestionsTest, OneIsAskedAboutAtATimeAndTooManyAreRefused)
{
    QList<std::shared_ptr<FakePagePermission>> wishes;
    for (int i = 0; i < 100; ++i)
        wishes.append(want(Kind::camera, QString("site%1.test").arg(i)));
    EXPECT_EQ(asked(), 1);
    EXPECT_TRUE(wishes[4]->answers.isEmpty());
    for (int i = 5; i < 100; ++i)
        EXPECT_EQ(wishes[i]->answers, refused);
    answer(true);
    EXPECT_EQ(wishes[0]->answers, granted);
    EXPECT_EQ(asked(), 2);
    EXPECT_EQ(window.permissions.last(), wishes[1]);
    window.permissionAnswers.first()(false);
    EXPECT_EQ(asked(), 2) << "a question is answered once";
    answer(false);
    EXPECT_EQ(wishes[1]->answers, refused);
    EXPECT_EQ(window.permissions.last(), wishes[2]);
}

TEST_F(PermissionQuestionsTest, WhoWantsTheSameGetsTheSameAnswer)
{
    const auto first = want(Kind::camera);
    const auto again = want(Kind::camera);
    const auto elsewhere = want(Kind::camera, "b.test");
    const auto other = want(Kind::location);
    answer(true);
    EXPECT_EQ(first->answers, granted);
    EXPECT_EQ(again->answers, granted);
    EXPECT_TRUE(elsewhere->answers.isEmpty());
    EXPECT_TRUE(other->answers.isEmpty());
    EXPECT_EQ(asked(), 2);
    EXPECT_EQ(window.permissions.last(), elsewhere);
}

TEST_F(PermissionQuestionsTest, ASiteThatGoesOnAskingIsRefusedUntilAnAddressIsGiven)
{
    for (int i = 0; i < 3; ++i) {
        want(Kind::camera);
        answer(false);
    }
    EXPECT_EQ(asked(), 3);
    EXPECT_EQ(spoken(), QStringList("Wishes of a.test are refused until an address is opened."));
    EXPECT_EQ(want(Kind::camera)->answers, refused);
    EXPECT_EQ(want(Kind::location)->answers, refused);
    EXPECT_TRUE(want(Kind::camera, "b.test")->answers.isEmpty());
    EXPECT_EQ(asked(), 4);
    answer(false);
    visit(0, "https://a.test/reloaded");
    EXPECT_EQ(want(Kind::camera)->answers, refused);
    scheduler.spawn(manager.operations().browserOpen("a.test"));
    settle();
    EXPECT_TRUE(want(Kind::camera)->answers.isEmpty());
}

TEST_F(PermissionQuestionsTest, SiteAfterSiteIsRefusedInTheEnd)
{
    for (const auto *site : {"a.test", "b.test", "c.test", "d.test", "e.test", "f.test"}) {
        EXPECT_TRUE(want(Kind::camera, site)->answers.isEmpty());
        answer(false);
    }
    EXPECT_EQ(spoken(), QStringList("Wishes of all sites are refused until an address is opened."));
    EXPECT_EQ(want(Kind::camera, "g.test")->answers, refused);
    manager.forgetRefusals();
    EXPECT_TRUE(want(Kind::camera, "g.test")->answers.isEmpty());
}

TEST_F(PermissionQuestionsTest, AnAgreementLetsASiteAskOn)
{
    for (int i = 0; i < 4; ++i) {
        want(Kind::camera);
        answer(i == 1);
    }
    EXPECT_TRUE(want(Kind::camera)->answers.isEmpty());
}

TEST_F(PermissionQuestionsTest, WhatWaitsOfASiteThatWasRefusedTooOftenIsNotAskedAnyMore)
{
    for (int i = 0; i < 2; ++i) {
        want(Kind::camera);
        answer(false);
    }
    want(Kind::camera);
    const auto location = want(Kind::location);
    const auto elsewhere = want(Kind::location, "b.test");
    answer(false);
    EXPECT_EQ(location->answers, refused);
    EXPECT_EQ(window.permissions.last(), elsewhere);
}

TEST_F(PermissionQuestionsTest, WhatIsWithdrawnGivesWayToTheNext)
{
    const auto asking = want(Kind::camera);
    const auto waiting = want(Kind::location);
    const auto last = want(Kind::screen);
    Q_EMIT waiting->withdrawn();
    EXPECT_EQ(asked(), 1);
    Q_EMIT asking->withdrawn();
    EXPECT_EQ(window.permissions.last(), last);
    EXPECT_TRUE(asking->answers.isEmpty());
}

TEST_F(PermissionQuestionsTest, TheWindowTakesItsQuestionsAlong)
{
    const auto asking = want(Kind::camera);
    const auto waiting = want(Kind::location);
    manager.windowClosed();
    EXPECT_EQ(asking->answers, refused);
    EXPECT_EQ(waiting->answers, refused);
    window.permissionAnswers.first()(true);
    EXPECT_EQ(asking->answers, refused);
    manager.makeWindowIfNeeded();
    want(Kind::camera);
    EXPECT_EQ(asked(), 2);
}

} // namespace
} // namespace morvane
