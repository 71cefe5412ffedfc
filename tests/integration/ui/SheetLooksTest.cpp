#include "ButtonLabel.h"
#include "SheetsFixture.h"

#include "support/EventCount.h"
#include "support/ShownSymbol.h"
#include "ui/sheets/PermissionView.h"
#include "ui/sheets/QuestionView.h"
#include "ui/sheets/SheetCard.h"
#include "ui/sheets/SheetHeader.h"
#include "ui/theme/ThemeColors.h"

#include <QWheelEvent>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// What the sheets show beside their words, and what they keep from the window.
class SheetLooksTest : public SheetsFixture {
protected:
    ThemeColors colors() const { return ThemeColors::fromPalette(window->palette()); }
    /// Whether the header has a symbol in a colour on a circle of 40 points of the same, hardly opaque.
    void expectSign(const Sheet *sheet, Symbol symbol, const QColor &color) const
    {
        auto *header = sheet->findChild<SheetHeader *>();
        const QImage picture = header->grab(QRect(0, 0, 40, 40)).toImage();
        EXPECT_TRUE(showsSymbol(picture, symbol, color, 22));
        const QColor outside = picture.pixelColor(0, 0);
        const QColor inside = picture.pixelColor(20, 2);
        EXPECT_NEAR(inside.red(), 0.85 * outside.red() + 0.15 * color.red(), 2);
        EXPECT_NEAR(inside.green(), 0.85 * outside.green() + 0.15 * color.green(), 2);
        EXPECT_NEAR(inside.blue(), 0.85 * outside.blue() + 0.15 * color.blue(), 2);
    }
};

TEST_F(SheetLooksTest, AnApprovalHasAShieldInOrangeAndADestructiveOneATriangleInRed)
{
    requestWrite();
    expectSign(permission, Symbol::shieldExclamation, colors().warning);
    model->gate().resolvePermission(false, false);
    requestCommand(u"rm -rf x"_s);
    expectSign(permission, Symbol::triangleExclamation, colors().error);
}

TEST_F(SheetLooksTest, AQuestionHasItsOwnSignAndOneProminentButton)
{
    ask(u"Which?"_s, {u"One"_s, u"Other"_s});
    expectSign(question, Symbol::question, colors().accent);
    auto *send = named<QPushButton>(u"Send your custom answer"_s);
    EXPECT_TRUE(showsLabel(*send, u"Send Answer"_s));
    EXPECT_TRUE(send->isDefault());
    EXPECT_FALSE(named<QPushButton>(u"Answer: One"_s)->isDefault());
}

TEST_F(SheetLooksTest, NothingIsRolledBelowASheet)
{
    EventCount received(QEvent::Wheel);
    requestWrite();
    window->installEventFilter(&received);
    const QPoint corner(2, 2);
    QWheelEvent wheel(corner, permission->mapToGlobal(corner), {}, {0, -120}, Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QSpontaneKeyEvent::setSpontaneous(&wheel);
    qApp->notify(permission, &wheel); // which keeps where it comes from
    EXPECT_EQ(received.count, 0);
}

TEST_F(SheetLooksTest, ThePartThatTheKeyboardComesToIsInSight)
{
    QStringList options;
    for (int i = 0; i < 60; ++i)
        options.append(u"Option %1"_s.arg(i));
    ask(u"Which?"_s, options);
    ASSERT_TRUE(QTest::qWaitFor([this] { return named<QPushButton>(u"Answer: Option 59"_s) != nullptr; }));
    settle();
    // Straight there, as a reader moves the focus.
    auto *last = named<QPushButton>(u"Answer: Option 59"_s);
    last->setFocus(Qt::OtherFocusReason);
    settle();
    EXPECT_EQ(last->visibleRegion().boundingRect(), last->rect());
}

} // namespace
} // namespace morvane
