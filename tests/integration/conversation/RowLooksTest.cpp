#include "ConversationInputFixture.h"

#include "support/EventCount.h"
#include "support/ShownSymbol.h"

#include <QScrollBar>
#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// What the rows look like, and where the mark of the keyboard is.
class RowLooksTest : public ConversationInputFixture {
protected:
    QImage picture() { return view.viewport()->grab().toImage(); }
    const ConversationStyle &style() const { return view.rows().style(); }
    QRgb ground() const { return view.palette().color(QPalette::Base).rgb(); }
    /// Whether anything is drawn within a rectangle of the viewport.
    bool isDrawn(const QRect &place)
    {
        const QImage image = picture();
        for (int y = place.top(); y <= place.bottom(); ++y)
            for (int x = place.left(); x <= place.right(); ++x)
                if (image.pixel(x, y) != ground())
                    return true;
        return false;
    }
    /// Whether the mark of the keyboard is around a row: its left edge stands beside everything else.
    bool isMarked(qsizetype row)
    {
        const int left = view.rows().columnLeft() - style().margin / 2;
        return isDrawn({left, view.rowRect(row).center().y(), 4, 1});
    }
    QRect frameOf(qsizetype row) const
    {
        const RowFrame frame = view.rows().rowFrame(view.content().item(row));
        return {frame.left, view.rowRect(row).top() + frame.top, frame.width, style().captionLineHeight};
    }
};

TEST_F(RowLooksTest, TheUserSpeaksInABubbleAtTheRightAndMorvaneBesideItsMark)
{
    say(Role::user, u"Hello"_s);
    say(Role::assistant, u"Good day."_s);
    show();
    const RowFrame frame = view.rows().rowFrame(view.content().item(0));
    const int top = view.rowRect(0).top() + style().rowGap / 2;
    const int right = frame.left + frame.width + style().bubblePadding;
    EXPECT_NEAR(right, view.rows().columnLeft() + view.rows().columnWidth(), 2);
    // With a radius of 15 the arc passes between these two places of the corner.
    const QImage image = picture();
    EXPECT_EQ(image.pixel(right - 1 - 3, top + 3), ground());
    EXPECT_EQ(image.pixel(right - 1 - 6, top + 6), style().colors.userBubble.rgb());
    EXPECT_TRUE(isDrawn(
        {view.rows().columnLeft(), view.rowRect(1).top(), style().markSize, view.rowRect(1).height()}));
    EXPECT_FALSE(isDrawn(
        {view.rows().columnLeft(), view.rowRect(0).top(), style().markSize, view.rowRect(0).height()}));
}

TEST_F(RowLooksTest, AStepOfEachKindHasItsSymbolAndItsColour)
{
    using Kind = ActivityStep::Kind;
    const ThemeColors &colors = style().colors;
    ASSERT_EQ(style().symbolSize, 14);
    for (const auto &[kind, symbol, color] :
         {std::tuple(Kind::info, Symbol::arrowRight, colors.secondaryText),
          std::tuple(Kind::tool, Symbol::wrench, colors.accent),
          std::tuple(Kind::success, Symbol::checkCircle, colors.success),
          std::tuple(Kind::error, Symbol::crossCircle, colors.error)}) {
        activity.clear();
        transcript.reset({message(Role::user, u"Go"_s)});
        activity.log(u"Something"_s, kind);
        show();
        EXPECT_TRUE(showsSymbol(picture().copy(view.rowRect(2)), symbol, color, 14)) << int(kind);
    }
    EXPECT_TRUE(showsSymbol(picture().copy(view.rowRect(1)), Symbol::list, colors.secondaryText, 14));
}

TEST_F(RowLooksTest, TheActivityShowsItsNumberOfStepsAndEachStepItsTime)
{
    say(Role::user, u"Go"_s);
    activity.log(u"Something"_s, ActivityStep::Kind::info);
    show();
    const QRect header = frameOf(1);
    const int right = header.right() - style().symbolSize - style().markGap / 2;
    EXPECT_TRUE(isDrawn({right - 10, header.top(), 10, header.height()})) << "the number";
    const QImage unfolded = picture().copy(header.right() - style().symbolSize, header.top(),
                                           style().symbolSize, header.height());
    const int column = view.rows().columnLeft() + view.rows().columnWidth();
    const QRect time(column - style().timeWidth, frameOf(2).top(), style().timeWidth,
                     style().captionLineHeight);
    EXPECT_TRUE(isDrawn(time));
    view.setActivityFolded(true);
    settle();
    EXPECT_NE(picture().copy(header.right() - style().symbolSize, header.top(), style().symbolSize,
                             header.height()),
              unfolded);
    EXPECT_TRUE(isDrawn({right - 10, header.top(), 10, header.height()})) << "folded too";
}

TEST_F(RowLooksTest, TheTimeOfAStepIsShort)
{
    say(Role::user, u"Go"_s);
    activity.log(u"Something"_s, ActivityStep::Kind::info);
    show();
    const QString name = accessibleRow(2)->text(QAccessible::Name);
    EXPECT_THAT(name.toStdString(), testing::MatchesRegex("Something, [0-9]+:[0-9][0-9].?.?.?.?"));
}

TEST_F(RowLooksTest, CodeTellsItsLanguage)
{
    const auto headerIsEmpty = [this](const QString &fence) {
        transcript.reset({message(Role::assistant, u"```"_s + fence + u"\nx\n```"_s)});
        show();
        const RowFrame frame = view.rows().rowFrame(view.content().item(0));
        const QRect header(frame.left + style().codePadding, view.rowRect(0).top() + frame.top + 2, 60,
                           style().codeHeaderHeight - 4);
        const QImage image = picture().copy(header);
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (image.pixel(x, y) != image.pixel(0, 0))
                    return false;
        return true;
    };
    EXPECT_TRUE(headerIsEmpty({}));
    EXPECT_FALSE(headerIsEmpty(u"python"_s));
}

TEST_F(RowLooksTest, TheMarkOfTheKeyboardComesWithItAndGoesWithTheMouse)
{
    transcript.reset({message(Role::assistant, u"One."_s), message(Role::assistant, u"Two."_s)});
    show();
    view.activateWindow();
    for (const auto reason : {Qt::TabFocusReason, Qt::BacktabFocusReason, Qt::ShortcutFocusReason}) {
        view.clearFocus();
        view.setFocus(Qt::MouseFocusReason);
        EXPECT_FALSE(isMarked(1)) << reason;
        view.clearFocus();
        view.setFocus(reason);
        EXPECT_TRUE(isMarked(1)) << reason;
    }
    QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, textOf(0));
    EXPECT_FALSE(isMarked(0));
    EXPECT_FALSE(isMarked(1));
    press(Qt::Key_Down);
    EXPECT_TRUE(isMarked(1));
    view.clearFocus();
    view.setFocus(Qt::MouseFocusReason);
    EXPECT_FALSE(isMarked(1));
    press(Qt::Key_Space);
    ASSERT_NE(menu(), nullptr);
    menu()->close();
    EXPECT_TRUE(isMarked(1));
}

TEST_F(RowLooksTest, TheMarkOfTheKeyboardIsDrawnAndWipedAtOnce)
{
    EventCount paints(QEvent::Paint);
    say(Role::assistant, u"One."_s);
    show();
    view.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&view));
    view.clearFocus();
    settle();
    view.viewport()->installEventFilter(&paints);
    view.setFocus(Qt::TabFocusReason);
    EXPECT_TRUE(QTest::qWaitFor([&paints] { return paints.count > 0; }));
    paints.count = 0;
    view.clearFocus();
    EXPECT_TRUE(QTest::qWaitFor([&paints] { return paints.count > 0; }));
}

TEST_F(RowLooksTest, TheMarkOfTheKeyboardIsThereAgainWhenTheFocusIsGivenBack)
{
    transcript.reset({message(Role::assistant, u"One."_s), message(Role::assistant, u"Two."_s)});
    show();
    view.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&view));
    view.clearFocus();
    view.setFocus(Qt::TabFocusReason);
    for (const auto reason : {Qt::PopupFocusReason, Qt::ActiveWindowFocusReason, Qt::OtherFocusReason}) {
        view.clearFocus();
        view.setFocus(reason);
        EXPECT_TRUE(isMarked(1)) << reason;
    }
    QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, textOf(1));
    view.clearFocus();
    view.setFocus(Qt::OtherFocusReason);
    EXPECT_FALSE(isMarked(1));
}

TEST_F(RowLooksTest, TheKeyboardBringsItsRowIntoSight)
{
    transcript.reset(dialogue(40));
    showWithFocus();
    press(Qt::Key_Home);
    settle();
    view.clearFocus();
    view.verticalScrollBar()->setValue(view.verticalScrollBar()->maximum());
    settle();
    ASSERT_FALSE(view.viewport()->rect().intersects(view.rowRect(0)));
    view.setFocus(Qt::TabFocusReason);
    settle();
    EXPECT_EQ(view.currentRow(), 0);
    EXPECT_TRUE(view.viewport()->rect().intersects(view.rowRect(0)));
}

} // namespace
} // namespace morvane
