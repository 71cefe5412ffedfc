#include "BrowserWindowFixture.h"

#include "browser/window/DownloadsBar.h"
#include "browser/window/PageArea.h"
#include "support/FakePageDownload.h"
#include "ui/sheets/AnswerGuard.h"

#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QScrollBar>
#include <vector>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace morvane {
namespace {

class DownloadsBarTest : public BrowserWindowFixture {
protected:
    std::shared_ptr<FakePageDownload> offer(int number)
    {
        auto file = std::make_shared<FakePageDownload>(u"file %1"_s.arg(number), u"files.test"_s);
        manager.downloads().add(file);
        settle();
        return file;
    }
    void take(int number)
    {
        files.push_back(offer(number));
        panel()->setDirectory(home.path());
        static_cast<QDialog *>(panel())->accept();
        settle();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    QFileDialog *panel() const { return part<QFileDialog>(); }
    /// What the user sees of why the panel came again.
    QString problem() const
    {
        const auto *label = part<DownloadsBar>()->findChild<QLabel *>(u"problem"_s);
        return label->isVisible() ? label->text() : QString();
    }
    QAbstractButton *cancel(int number) const
    {
        return button(u"Cancel the download of file %1"_s.arg(number));
    }

    std::vector<std::shared_ptr<FakePageDownload>> files;
};

TEST_F(DownloadsBarTest, ManyFilesLeaveThePageItsRoomAndTheKeyboardReachesThemAll)
{
    for (int number = 0; number < 3; ++number)
        take(number);
    const int withThree = window->minimumSizeHint().height();
    const int page = part<PageArea>()->height();
    for (int number = 3; number < 20; ++number)
        take(number);
    EXPECT_EQ(window->minimumSizeHint().height(), withThree);
    EXPECT_EQ(part<PageArea>()->height(), page);
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window));
    for (const int number : {19, 0, 10}) {
        QAbstractButton *wanted = cancel(number);
        ASSERT_NE(wanted, nullptr);
        wanted->setFocus(Qt::BacktabFocusReason);
        settle();
        EXPECT_EQ(wanted->visibleRegion().boundingRect().size(), wanted->size()) << number;
    }
    Q_EMIT files.at(5)->finished();
    settle();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(cancel(5), nullptr);
}

TEST_F(DownloadsBarTest, WhyThePanelComesAgainIsSeen)
{
    for (int number = 1; number < 7; ++number)
        take(number);
    const auto file = offer(7);
    const auto choose = [&](const QString &name) {
        panel()->setDirectory(home.path());
        panel()->findChild<QLineEdit *>()->setText(name);
        QDialog *const answered = panel();
        answered->accept();
        answered->reject(); // by a key that comes too late
        settle();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    };
    EXPECT_EQ(problem(), QString());
    choose(u"file 1"_s);
    ASSERT_NE(panel(), nullptr) << "it is asked again";
    EXPECT_EQ(problem(), u"Another download is written there."_s);
    const auto *label = part<DownloadsBar>()->findChild<QLabel *>(u"problem"_s);
    EXPECT_EQ(label->visibleRegion().boundingRect().size(), label->size());
    // The user may look at the others all the same while they go on.
    QScrollBar *scroll = part<DownloadsBar>()->verticalScrollBar();
    scroll->setValue(scroll->maximum());
    const int chosen = scroll->value();
    ASSERT_GT(chosen, 0);
    files.front()->progress(1, 2);
    settle();
    EXPECT_EQ(scroll->value(), chosen);
    choose(u"file 7"_s);
    EXPECT_EQ(problem(), QString());
    EXPECT_EQ(file->log, QStringList{u"to "_s + home.path(u"file 7"_s)});
}

TEST_F(DownloadsBarTest, WhereAFileGoesIsNotSaidByWhatTheUserIsWriting)
{
    const auto file = offer(1);
    const auto *name = panel()->findChild<QLineEdit *>();
    const QString offered = name->text();
    const auto type = [&] {
        QTest::keyClicks(QApplication::focusWidget(), u"x"_s);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        settle();
    };
    type();
    clock.advance(AnswerGuard::quietTime - 1ms);
    type();
    ASSERT_TRUE(panel()->isVisible());
    EXPECT_EQ(name->text(), offered);
    EXPECT_TRUE(file->log.isEmpty());
    clock.advance(AnswerGuard::quietTime);
    panel()->setDirectory(home.path());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    settle();
    EXPECT_EQ(file->log, QStringList{u"to "_s + home.path(u"file 1"_s)});
}

} // namespace
} // namespace morvane
