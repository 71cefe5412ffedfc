#include "ui/controls/CursorRest.h"

#include "support/WaitUntil.h"

#include <QApplication>
#include <QPlainTextEdit>
#include <QTest>
#include <gtest/gtest.h>

namespace morvane {
namespace {

using namespace std::chrono_literals;

/// A field that counts how often it is painted.
class PaintCounter : public QPlainTextEdit {
public:
    int paints = 0;

protected:
    void paintEvent(QPaintEvent *event) override
    {
        ++paints;
        QPlainTextEdit::paintEvent(event);
    }
};

/// Blinks fast, so that the tests need not wait long for it.
class CursorRestTest : public testing::Test {
protected:
    static constexpr int flashTime = 20;

    CursorRestTest()
    {
        QApplication::setCursorFlashTime(flashTime);
        field.show();
        field.activateWindow();
        field.setFocus();
    }
    ~CursorRestTest() override { QApplication::setCursorFlashTime(before); }

    bool blinks()
    {
        const int painted = field.paints;
        return waitUntil([&] { return field.paints > painted + 3; }, 300ms);
    }

    const int before = QApplication::cursorFlashTime();
    PaintCounter field;
};

TEST_F(CursorRestTest, TheCursorStandsStillWhenNobodyWorks)
{
    ASSERT_TRUE(waitUntil([this] { return blinks(); }));
    const CursorRest rest(1ms);
    ASSERT_TRUE(waitUntil([] { return QApplication::cursorFlashTime() == 0; }));
    EXPECT_TRUE(waitUntil([this] { return !blinks(); }));
}

TEST_F(CursorRestTest, AKeyLetsItBlinkAgain)
{
    CursorRest rest(100ms);
    ASSERT_TRUE(waitUntil([] { return QApplication::cursorFlashTime() == 0; }));
    QTest::keyClick(&field, Qt::Key_A);
    EXPECT_EQ(QApplication::cursorFlashTime(), flashTime);
    EXPECT_EQ(field.toPlainText(), "a");
}

TEST_F(CursorRestTest, TheDesktopsRhythmIsBackAtTheEnd)
{
    {
        const CursorRest rest(1ms);
        ASSERT_TRUE(waitUntil([] { return QApplication::cursorFlashTime() == 0; }));
    }
    EXPECT_EQ(QApplication::cursorFlashTime(), flashTime);
}

} // namespace
} // namespace morvane
