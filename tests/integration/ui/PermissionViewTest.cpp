#include "SheetsFixture.h"

#include "ui/sheets/PermissionView.h"
#include "ui/sheets/SheetCard.h"
#include "ui/theme/Contrast.h"

#include <QCheckBox>
#include <QLabel>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

const auto cautionTitle = u"Action requires approval"_s;
const auto dangerTitle = u"Destructive action requires approval"_s;
const auto cautionAdvice = u"Only allow this if you trust what it will do on your Mac. You can "
                           "deny it and the assistant will continue without doing it."_s;
const auto dangerAdvice = u"This action can delete data or be hard to undo. Only allow it if you "
                          "are sure it is safe."_s;
const auto toggleName = u"Always allow this type of action"_s;

class PermissionViewTest : public SheetsFixture {
protected:
    AIToolCall writeFile() const
    {
        return toolCall(u"write_file"_s, R"({"path":"/tmp/notes.txt","content":"x"})");
    }
    QPlainTextEdit *summary() const { return named<QPlainTextEdit>(u"Action to approve"_s); }
    QCheckBox *toggle() const { return named<QCheckBox>(toggleName); }
    QPushButton *deny() const { return named<QPushButton>(u"Deny the action"_s); }
    QPushButton *allow() const { return named<QPushButton>(u"Allow the action"_s); }
    QPushButton *allowDestructive() const { return named<QPushButton>(u"Allow this destructive action"_s); }
};

TEST_F(PermissionViewTest, IsNotThereWithoutARequest)
{
    EXPECT_FALSE(permission->isOpen());
    EXPECT_FALSE(permission->isVisible());
}

TEST_F(PermissionViewTest, ShowsAPlainRequestWithItsTexts)
{
    request(writeFile());
    ASSERT_TRUE(permission->isVisible());
    EXPECT_THAT(labels(*permission), ElementsAre(cautionTitle, cautionAdvice));
    EXPECT_EQ(summary()->toPlainText(), u"write a file at /tmp/notes.txt"_s);
    EXPECT_EQ(toggle()->text(), u"Always allow this type of action without asking again"_s);
    EXPECT_EQ(toggle()->accessibleDescription(),
              u"It will run automatically next time. You can change this in Settings."_s);
    EXPECT_NE(deny(), nullptr);
    EXPECT_TRUE(allow()->isDefault());
}

TEST_F(PermissionViewTest, ShowsADestructiveRequestWithItsTextsAndNoToggle)
{
    requestCommand(u"rm -rf /tmp/x"_s);
    EXPECT_THAT(labels(*permission), ElementsAre(dangerTitle, dangerAdvice));
    EXPECT_EQ(summary()->toPlainText(),
              u"run the command: rm -rf /tmp/x. Warning: this is a destructive action that may "
              "delete data or be hard to undo"_s);
    EXPECT_EQ(toggle(), nullptr);
    EXPECT_NE(deny(), nullptr);
    EXPECT_NE(allowDestructive(), nullptr);
    EXPECT_EQ(allow(), nullptr);
}

TEST_F(PermissionViewTest, ADestructiveRequestIsNeverAllowedForGood)
{
    auto answer = requestCommand(u"rm -rf /tmp/x"_s);
    for (QCheckBox *hidden : permission->findChildren<QCheckBox *>())
        hidden->setChecked(true);
    notice();
    click(allowDestructive());
    EXPECT_TRUE(settings->alwaysAllowedTools().isEmpty());
    EXPECT_TRUE(answer.done());
}

TEST_F(PermissionViewTest, AModifierIsNoSignOfTyping)
{
    auto answer = request(writeFile());
    now += std::chrono::milliseconds(400);
    press(Qt::Key_Shift, Qt::ShiftModifier);
    now += std::chrono::milliseconds(200);
    press(Qt::Key_Return);
    settle();
    EXPECT_TRUE(answer.done());
}

TEST_F(PermissionViewTest, TheFocusFindsItsWayBackFromUnderTwoSheets)
{
    draft->setFocus();
    request(writeFile());
    ask(u"Which?"_s);
    notice();
    model->gate().resolvePermission(false, false);
    settle();
    EXPECT_NE(focus(), draft);
    model->questions().resolveQuestion(u"That"_s);
    settle();
    EXPECT_EQ(focus(), draft);
}

TEST_F(PermissionViewTest, CommandsAreShownInFixedWidth)
{
    requestCommand(u"rm -rf /tmp/x"_s);
    EXPECT_TRUE(QFontInfo(summary()->font()).fixedPitch());
}

TEST_F(PermissionViewTest, AllowButtonAllowsWithoutRememberingAsTheToggleIsOff)
{
    auto answer = request(writeFile());
    notice();
    click(allow());
    ASSERT_TRUE(answer.done());
    EXPECT_TRUE(answer.result());
    EXPECT_TRUE(settings->alwaysAllowedTools().isEmpty());
    EXPECT_FALSE(permission->isVisible());
}

TEST_F(PermissionViewTest, AllowWithTheToggleOnIsRemembered)
{
    auto answer = request(writeFile());
    notice();
    click(toggle());
    EXPECT_TRUE(toggle()->isChecked());
    click(allow());
    ASSERT_TRUE(answer.done());
    EXPECT_TRUE(answer.result());
    EXPECT_THAT(settings->alwaysAllowedTools(), ElementsAre(u"write_file"_s));
}

TEST_F(PermissionViewTest, DenyButtonDeniesAndRemembersNothing)
{
    auto answer = request(writeFile());
    notice();
    click(toggle());
    click(deny());
    ASSERT_TRUE(answer.done());
    EXPECT_FALSE(answer.result());
    EXPECT_TRUE(settings->alwaysAllowedTools().isEmpty());
    EXPECT_FALSE(permission->isVisible());
}

TEST_F(PermissionViewTest, EscapeDenies)
{
    auto answer = request(writeFile());
    notice();
    press(Qt::Key_Escape);
    ASSERT_TRUE(answer.done());
    EXPECT_FALSE(answer.result());
}

TEST_F(PermissionViewTest, EscapeDeniesFromEveryPartOfTheSheet)
{
    for (int tabs = 0; tabs < 4; ++tabs) {
        auto answer = request(writeFile());
        notice();
        for (int tab = 0; tab < tabs; ++tab)
            press(Qt::Key_Tab);
        press(Qt::Key_Escape);
        ASSERT_TRUE(answer.done()) << tabs;
        EXPECT_FALSE(answer.result());
    }
}

TEST_F(PermissionViewTest, ReturnAllowsFromTheText)
{
    auto answer = request(writeFile());
    EXPECT_EQ(focus(), summary());
    notice();
    press(Qt::Key_Return);
    ASSERT_TRUE(answer.done());
    EXPECT_TRUE(answer.result());
}

TEST_F(PermissionViewTest, ReturnAllowsFromTheToggleWithItsState)
{
    auto answer = request(writeFile());
    notice();
    press(Qt::Key_Tab);
    ASSERT_EQ(focus(), toggle());
    press(Qt::Key_Space);
    EXPECT_TRUE(toggle()->isChecked());
    press(Qt::Key_Enter, Qt::KeypadModifier);
    ASSERT_TRUE(answer.done());
    EXPECT_TRUE(answer.result());
    EXPECT_THAT(settings->alwaysAllowedTools(), Contains(u"write_file"_s));
}

TEST_F(PermissionViewTest, ReturnOnTheDenyButtonDenies)
{
    auto answer = request(writeFile());
    notice();
    deny()->setFocus();
    press(Qt::Key_Return);
    ASSERT_TRUE(answer.done());
    EXPECT_FALSE(answer.result());
}

TEST_F(PermissionViewTest, ToggleStartsOffForEachRequest)
{
    request(writeFile());
    notice();
    click(toggle());
    ASSERT_TRUE(toggle()->isChecked());
    click(deny());
    request(writeFile());
    EXPECT_FALSE(toggle()->isChecked());
}

TEST_F(PermissionViewTest, DestructiveRequestAfterATickedOneStoresNothing)
{
    request(writeFile());
    notice();
    click(toggle());
    press(Qt::Key_Escape);
    auto answer = requestCommand(u"rm -rf /tmp/x"_s);
    notice();
    click(allowDestructive());
    ASSERT_TRUE(answer.done());
    EXPECT_TRUE(answer.result());
    EXPECT_TRUE(settings->alwaysAllowedTools().isEmpty());
}

TEST_F(PermissionViewTest, ClosesWhenTheRequestIsAnsweredElsewhere)
{
    request(writeFile());
    ASSERT_TRUE(permission->isVisible());
    model->gate().resolvePermission(false, false);
    EXPECT_FALSE(permission->isVisible());
}

TEST_F(PermissionViewTest, ShowsARequestThatWasPendingBeforeItWasMade)
{
    request(writeFile());
    auto *late = new PermissionView(model->gate(), window.get(), [this] { return now; });
    EXPECT_TRUE(late->isOpen());
}

TEST_F(PermissionViewTest, IsAModalDialogNamedByItsTitle)
{
    requestCommand(u"rm -rf /tmp/x"_s);
    const auto *card = accessible(permission->card());
    EXPECT_EQ(card->role(), QAccessible::Dialog);
    EXPECT_EQ(card->text(QAccessible::Name), dangerTitle);
    EXPECT_EQ(card->text(QAccessible::Description), dangerAdvice);
    EXPECT_TRUE(card->state().modal);
    const auto *text = accessible(summary());
    EXPECT_TRUE(text->state().readOnly);
}

TEST_F(PermissionViewTest, TabGoesThroughTheSheetInReadingOrder)
{
    request(writeFile());
    notice();
    EXPECT_THAT(tabStops(), ElementsAre(summary(), toggle(), deny(), allow()));
}

TEST_F(PermissionViewTest, HiddenCharactersOfACommandAreShown)
{
    requestCommand(u"ls \u202E/ fr- mr\u2066 \u200Bx\ty"_s);
    EXPECT_THAT(summary()->toPlainText().toStdString(),
                testing::HasSubstr("ls \\u202E/ fr- mr\\u2066 \\u200Bx\\ty"));
}

TEST_F(PermissionViewTest, ACommandCannotHideItsBeginning)
{
    requestCommand(u"rm -rf ~ #\r\u001B[2Kls"_s);
    EXPECT_THAT(summary()->toPlainText().toStdString(), testing::HasSubstr("rm -rf ~ #\\r\\u001B[2Kls"));
}

TEST_F(PermissionViewTest, MarkupInACommandIsShownAsText)
{
    requestCommand(u"echo <b>x</b> <img src=y>"_s);
    EXPECT_THAT(summary()->toPlainText().toStdString(), testing::HasSubstr("echo <b>x</b> <img src=y>"));
}

TEST_F(PermissionViewTest, SaysHowMuchThereIsOfACommandThatDoesNotFit)
{
    requestCommand(u"ls\n"_s.repeated(499) + u"rm -rf ~"_s);
    const auto extent = u"500 lines, 1,601 characters in all. Scroll to read the rest."_s;
    EXPECT_THAT(labels(*permission), Contains(extent));
    EXPECT_EQ(summary()->accessibleDescription(), extent);
    EXPECT_TRUE(summary()->toPlainText().contains(u"rm -rf ~"_s));
    EXPECT_TRUE(allowDestructive()->isVisible());
    EXPECT_TRUE(window->rect().contains(allowDestructive()->mapTo(window.get(), QPoint(0, 0))));
}

TEST_F(PermissionViewTest, SaysNothingOfTheExtentOfACommandThatFits)
{
    requestCommand(u"rm -rf /tmp/x\nls"_s);
    EXPECT_THAT(
        labels(*permission),
        Not(Contains(testing::ResultOf([](const QString &text) { return text.contains(u"in all"); }, true))));
    EXPECT_TRUE(summary()->accessibleDescription().isEmpty());
}

TEST_F(PermissionViewTest, TheFocusIsSeenOnTheProminentButton)
{
    request(toolCall(u"write_file"_s, R"({"path":"/tmp/x"})"));
    auto *allow = named<QPushButton>(u"Allow the action"_s);
    ASSERT_NE(allow, nullptr);
    const auto contrastNearEdge = [allow] {
        const QImage image = allow->grab().toImage();
        const QColor ground = image.pixelColor(8, image.height() / 2);
        double greatest = 1;
        for (int x = 1; x < 8; ++x)
            greatest = std::max(greatest, contrastRatio(image.pixelColor(x, image.height() / 2), ground));
        return greatest;
    };
    EXPECT_LT(contrastNearEdge(), 3);
    allow->setFocus(Qt::TabFocusReason);
    ASSERT_TRUE(allow->hasFocus());
    EXPECT_GE(contrastNearEdge(), 3);
}

} // namespace
} // namespace morvane
