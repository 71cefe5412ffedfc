#include "ui/sheets/UnaskedDialog.h"

#include "support/WaitUntil.h"

#include <QDialog>
#include <QTest>
#include <gtest/gtest.h>

namespace morvane {
namespace {

/// Counts how often it became the active one.
class CountingWindow : public QWidget {
public:
    int activations = 0;

protected:
    bool event(QEvent *event) override
    {
        activations += event->type() == QEvent::WindowActivate ? 1 : 0;
        return QWidget::event(event);
    }
};

TEST(UnaskedDialogTest, WhoeverComesBackToItsWindowIsLedToTheDialog)
{
    CountingWindow window;
    window.show();
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    QDialog dialog(&window);
    dialog.setWindowModality(Qt::WindowModal);
    EXPECT_FALSE(openUnasked(dialog));
    ASSERT_TRUE(waitUntil([&] { return dialog.isActiveWindow(); }));
    const int before = window.activations;
    window.activateWindow();
    ASSERT_TRUE(waitUntil([&] { return window.activations > before; }));
    EXPECT_TRUE(waitUntil([&] { return dialog.isActiveWindow(); }));
}

} // namespace
} // namespace morvane
