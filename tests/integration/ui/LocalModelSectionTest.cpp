#include "SettingsViewFixture.h"

#include "ui/settings/LocalModelSection.h"

#include <QApplication>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// The local model's section for those who work by keyboard; what it shows is tested with the other sections.
class LocalModelSectionTest : public SettingsViewFixture {
protected:
    /// The names of what takes the focus from now on.
    const QStringList &recordFocus()
    {
        QObject::connect(qApp, &QApplication::focusChanged, view.get(), [this](QWidget *, QWidget *now) {
            if (now)
                m_focused.append(now->accessibleName());
        });
        return m_focused;
    }

    /// What scrolls the section.
    QScrollArea *scrollArea() const
    {
        for (QWidget *around = view->findChild<LocalModelSection *>(); around;
             around = around->parentWidget())
            if (auto *found = qobject_cast<QScrollArea *>(around))
                return found;
        return nullptr;
    }
    bool isInSight(const QWidget *part) const { return part->visibleRegion().boundingRect() == part->rect(); }

private:
    QStringList m_focused;
};

TEST_F(LocalModelSectionTest, TheFocusStaysWithTheModelThatIsDownloaded)
{
    localModel.serverRunning = true;
    localModel.models = QStringList("qwen2.5");
    choose(ProviderID::ollama);
    ASSERT_TRUE(QTest::qWaitForWindowActive(view.get()));
    auto *download = named<QPushButton>("Download qwen3:4b");
    download->setFocus();
    const QStringList &focused = recordFocus();
    localModel.pullTime = std::chrono::hours(1);
    localModel.pullFailure = "No room.";
    QTest::keyClick(download, Qt::Key_Space);
    settle();
    EXPECT_EQ(view->focusWidget()->accessibleName(), "Download progress 42%");
    clock.advance(std::chrono::hours(1));
    settle();
    EXPECT_EQ(view->focusWidget(), download) << "to be tried again";
    localModel.pullFailure.clear();
    QTest::keyClick(download, Qt::Key_Space);
    settle();
    clock.advance(std::chrono::hours(1));
    settle();
    EXPECT_EQ(view->focusWidget()->accessibleName(), "Delete the qwen3:4b model from this Mac");
    EXPECT_FALSE(focused.contains("Creativity temperature")) << focused.join(u'\n').toStdString();
    EXPECT_EQ(focused.size(), 4) << focused.join(u'\n').toStdString();
}

TEST_F(LocalModelSectionTest, TheFocusStaysWithTheInstallation)
{
    localModel.installationTime = std::chrono::hours(1);
    choose(ProviderID::ollama);
    ASSERT_TRUE(QTest::qWaitForWindowActive(view.get()));
    model->cancelLocalModelWork();
    settle();
    auto *install = named<QPushButton>("Install the built-in local model");
    install->setFocus();
    const QStringList &focused = recordFocus();
    localModel.failure = "No room.";
    QTest::keyClick(install, Qt::Key_Space);
    settle();
    EXPECT_EQ(view->focusWidget(), named<QProgressBar>("Download progress"));
    clock.advance(std::chrono::hours(1));
    settle();
    EXPECT_EQ(view->focusWidget(), install);
    EXPECT_EQ(focused.size(), 2) << focused.join(u'\n').toStdString();
}

TEST_F(LocalModelSectionTest, NoWordOfTheProgramHoweverLongWidensIt)
{
    localModel.installationTime = std::chrono::hours(1);
    choose(ProviderID::ollama);
    settle();
    const auto *section = view->findChild<LocalModelSection *>();
    const int width = section->minimumSizeHint().width();
    localModel.progress(QString(5'000, u'x'), 0.07);
    settle();
    EXPECT_EQ(section->minimumSizeHint().width(), width);
}

TEST_F(LocalModelSectionTest, TheProgressIsInSightWhenItTakesTheFocusInALowWindow)
{
    localModel.serverRunning = true;
    localModel.models = QStringList("qwen2.5");
    choose(ProviderID::ollama);
    ASSERT_TRUE(QTest::qWaitForWindowActive(view.get()));
    view->resize(700, 260);
    settle();
    QScrollBar *scrollBar = scrollArea()->verticalScrollBar();
    auto *download = named<QPushButton>("Download qwen3:4b");
    download->setFocus();
    localModel.pullTime = std::chrono::hours(1);
    // The button is the last that is seen, so that what takes its place one line lower is not.
    scrollArea()->ensureWidgetVisible(download, 0, 0);
    const int bottom = download->mapTo(scrollArea()->widget(), QPoint(0, download->height())).y();
    scrollBar->setValue(bottom - scrollArea()->viewport()->height());
    ASSERT_TRUE(isInSight(download));
    QTest::keyClick(download, Qt::Key_Space);
    settle();
    ASSERT_EQ(view->focusWidget()->accessibleName(), "Download progress 42%");
    EXPECT_TRUE(isInSight(view->focusWidget()));
}

TEST_F(LocalModelSectionTest, AnErrorWithoutABlankIsBrokenAndReadWhole)
{
    const QString reason(1'000, u'x');
    localModel.failure = reason;
    choose(ProviderID::ollama);
    EXPECT_EQ(scrollArea()->horizontalScrollBar()->maximum(), 0);
    EXPECT_NE(named<QLabel>("Local model error: " + reason), nullptr);
    const QString longer = QString(QChar::highSurrogate(0x1F600)) + QChar::lowSurrogate(0x1F600);
    localModel.failure = longer.repeated(1'000);
    named<QPushButton>("Install the built-in local model")->click();
    settle();
    EXPECT_EQ(scrollArea()->horizontalScrollBar()->maximum(), 0);
    localModel.failure = "No room.";
    named<QPushButton>("Install the built-in local model")->click();
    settle();
    EXPECT_TRUE(shows("Local model error: No room."));
}

TEST_F(LocalModelSectionTest, TheInstallationCannotBeAskedForWhileAModelIsDownloaded)
{
    localModel.installationTime = std::chrono::hours(1);
    choose(ProviderID::ollama);
    model->cancelLocalModelWork();
    settle();
    localModel.serverRunning = true;
    localModel.pullTime = std::chrono::hours(1);
    named<QPushButton>("Download qwen3:4b")->click();
    settle();
    auto *install = named<QPushButton>("Install the built-in local model");
    ASSERT_NE(install, nullptr);
    EXPECT_FALSE(install->isEnabled());
    model->cancelLocalModelWork();
    settle();
    EXPECT_TRUE(install->isEnabled());
}

} // namespace
} // namespace morvane
