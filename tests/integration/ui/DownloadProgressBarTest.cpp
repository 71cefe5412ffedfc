#include "ui/controls/DownloadProgressBar.h"

#include "support/EventCount.h"
#include "support/WaitUntil.h"

#include <QLabel>
#include <QTest>
#include <QVBoxLayout>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class DownloadProgressBarTest : public testing::Test {
protected:
    DownloadProgressBarTest() : label(new QLabel(u"Beside the bar"_s)), bar(new DownloadProgressBar)
    {
        auto *column = new QVBoxLayout(&window);
        column->addWidget(label);
        column->addWidget(bar);
        window.show();
        isShown = QTest::qWaitForWindowExposed(&window);
        bar->showFraction(0.1);
        window.grab();
        label->installEventFilter(&labelPaints);
        bar->installEventFilter(&barPaints);
    }

    QWidget window;
    QLabel *label;
    DownloadProgressBar *bar;
    EventCount labelPaints{QEvent::Paint};
    EventCount barPaints{QEvent::Paint};
    bool isShown = false;
};

TEST_F(DownloadProgressBarTest, ANewPercentIsPaintedWithTheNextFrame)
{
    ASSERT_TRUE(isShown);
    label->update();
    bar->showFraction(0.5);
    bar->showFraction(std::nullopt);
    bar->showFraction(0.75);
    EXPECT_EQ(labelPaints.count, 0);
    EXPECT_EQ(barPaints.count, 0);
    EXPECT_TRUE(waitUntil([this] { return barPaints.count > 0; }));
    EXPECT_EQ(bar->percent(), 75);
}

} // namespace
} // namespace morvane
