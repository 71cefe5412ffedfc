#include "support/AppFixture.h"
#include "ui/window/RequiredUpdateView.h"
#include "ui/window/UpdateAlertView.h"

#include <QtTest>

using namespace Qt::StringLiterals;

using namespace std::chrono_literals;
using testing::IsEmpty;

namespace morvane {
namespace {

/// The sheet and the alert in a window, for long enough that the user has seen them.
class UpdateSheetKeysTest : public AppFixture {
protected:
    void SetUp() override
    {
        host.resize(800, 600);
        host.show();
        host.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&host));
    }

    UpdateModel &checker() { return model->updates(); }
    void tell(const UpdateInfo &update)
    {
        updates.manifest = update;
        runTask(scheduler, checker().checkForUpdates(UpdateModel::Occasion::user));
        settle();
        alert = new UpdateAlertView(checker(), &host, now());
    }
    void require()
    {
        UpdateInfo update = sampleUpdate();
        update.required = true;
        tell(update);
    }
    /// More than a pause has passed whenever somebody asks.
    SteadyNow now()
    {
        return [this] { return m_now += AnswerGuard::quietTime; };
    }
    void type(Qt::Key key)
    {
        QTest::keyClick(host.focusWidget(), key);
        settle();
    }

    QWidget host;
    UpdateAlertView *alert = nullptr;

private:
    std::chrono::steady_clock::time_point m_now;
};

TEST_F(UpdateSheetKeysTest, EscapeIsLater)
{
    tell(sampleUpdate());
    type(Qt::Key_Escape);
    EXPECT_FALSE(alert->isOpen());
    EXPECT_FALSE(checker().alert());
    EXPECT_THAT(updates.downloads, IsEmpty());
}

TEST_F(UpdateSheetKeysTest, ReturnInTheNotesTakesTheUpdate)
{
    tell(sampleUpdate());
    type(Qt::Key_Return);
    EXPECT_FALSE(alert->isOpen());
    EXPECT_EQ(updates.downloads.size(), 1);
}

TEST_F(UpdateSheetKeysTest, EscapeAndReturnCloseWhatOnlyTells)
{
    for (const Qt::Key key : {Qt::Key_Escape, Qt::Key_Return}) {
        tell(sampleUpdate(u"1.2"_s, 5));
        ASSERT_TRUE(alert->isOpen());
        type(key);
        EXPECT_FALSE(alert->isOpen());
    }
    EXPECT_THAT(updates.downloads, IsEmpty());
}

TEST_F(UpdateSheetKeysTest, EscapeClosesNothingThatIsRequired)
{
    require();
    auto *sheet = new RequiredUpdateView(checker(), &host, now());
    type(Qt::Key_Escape);
    EXPECT_TRUE(alert->isOpen());
    EXPECT_TRUE(checker().alert());
    checker().closeAlert();
    settle();
    ASSERT_TRUE(sheet->isAncestorOf(host.focusWidget()));
    type(Qt::Key_Escape);
    EXPECT_TRUE(sheet->isOpen());
}

TEST_F(UpdateSheetKeysTest, ReturnAnywhereInTheRequiredSheetTakesTheUpdate)
{
    require();
    auto *sheet = new RequiredUpdateView(checker(), &host, now());
    checker().closeAlert();
    settle();
    ASSERT_TRUE(sheet->isAncestorOf(host.focusWidget()));
    sheet->setFocusPolicy(Qt::StrongFocus);
    sheet->setFocus();
    type(Qt::Key_Return);
    EXPECT_EQ(updates.downloads.size(), 1);
}

} // namespace
} // namespace morvane
