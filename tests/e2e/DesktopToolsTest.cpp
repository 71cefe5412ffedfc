#include "DesktopTest.h"

#include "support/ClipboardManager.h"
#include "support/WaitUntil.h"

#include <QFile>
#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

TEST_F(DesktopTest, TheModelLooksTypesIntoAFieldPressesAButtonByItsNumberAndReadsTheResult)
{
    MorvaneSession &morvane =
        prepare({callingTool("activate_app", R"({"name":"yad"})"), callingTool("capture_screen", "{}"),
                 callingTool("ax_type", R"({"index":1,"text":"Grüße an 42"})"),
                 callingTool("ax_click", R"({"index":2})"), callingTool("get_frontmost_app", "{}"),
                 callingTool("capture_screen", "{}"), ScriptedTurn::saying({"The form is filled in."})});
    // It covers the rest of the screen: the model is given no more than the beginning of a long result.
    startProgram(morvane, u"yad"_s,
                 {u"--form"_s, u"--maximized"_s, u"--title=Copying"_s, u"--field=Original"_s,
                  u"--field=Copy it:fbtn"_s, u"--field=Copied"_s, u"--button=Leave:0"_s, u""_s,
                  u"@sh -c \"echo 3:copied %1\""_s, u""_s});
    morvane.start();
    morvane.send(u"Fill in the form"_s);
    ASSERT_TRUE(morvane.ear().hears(u"The form is filled in."_s));
    const QStringList answers = results(morvane);
    ASSERT_EQ(answers.size(), 6) << answers.join(u"\n---\n"_s).toStdString();
    EXPECT_EQ(answers.at(0), u"Activated yad."_s);
    EXPECT_TRUE(answers.at(1).startsWith(
        u"Here is what is on the screen right now (frontmost window: \"Copying\").\n"
        "Screen region: 1280 x 960 points with top-left corner at (0, 0). Text with click coordinates:\n"_s))
        << answers.at(1).toStdString();
    EXPECT_TRUE(answers.at(1).contains(u"\n[2] button 'Copy it' at ("_s)) << answers.at(1).toStdString();
    EXPECT_EQ(answers.at(2), u"Set the contents of text field to \"Grüße an 42\"."_s);
    EXPECT_TRUE(answers.at(3).startsWith(u"Pressed button 'Copy it' at ("_s)) << answers.at(3).toStdString();
    EXPECT_EQ(answers.at(4), u"The frontmost application is Yad."_s);
    EXPECT_TRUE(answers.at(5).contains(u"text field 'copied Grüße an 42' at ("_s))
        << answers.at(5).toStdString();
}

TEST_F(DesktopTest, NoFieldOfMorvanesOwnWindowIsFilledInByItsNumber)
{
    constexpr int most = 20;
    std::vector<ScriptedTurn> turns{callingTool("capture_screen", "{}")};
    for (int index = 1; index <= most; ++index)
        turns.push_back(
            callingTool("ax_type", "{\"index\":" + std::to_string(index) + ",\"text\":\"not mine\"}"));
    turns.push_back(ScriptedTurn::saying({"It is all tried."}));
    MorvaneSession &morvane = prepare(std::move(turns));
    morvane.setSetting(u"unlimitedSteps"_s, u"true"_s);
    morvane.start();
    morvane.send(u"Fill in all fields"_s);
    ASSERT_TRUE(morvane.ear().hears(u"It is all tried."_s));
    const QStringList answers = results(morvane);
    ASSERT_EQ(answers.size(), 1 + most);
    for (int index = 1; index <= most; ++index)
        EXPECT_THAT(answers.at(index).toStdString(),
                    testing::AnyOf(testing::HasSubstr("] is in Morvane's own window."),
                                   testing::StartsWith("Error: there is no element [")));
    EXPECT_GE(answers.filter(u"] is in Morvane's own window."_s).size(), 10);
    EXPECT_EQ(morvane.program().find(u"Message Morvane"_s).text(), QString());
}

TEST_F(DesktopTest, TypingIntoAnotherProgramEndsWhenTheUserComesBackAndEscapeEndsTheRun)
{
    constexpr int lines = 1500;
    std::string text;
    for (int line = 0; line < lines; ++line)
        text += "ß\\n";
    ScriptedTurn silent;
    silent.steps = {step::Stall{}};
    MorvaneSession &morvane =
        prepare({callingTool("activate_app", R"({"name":"xterm"})"),
                 callingTool("type_text", "{\"text\":\"" + text + "\"}"), silent,
                 callingTool("activate_app", R"({"name":"xterm"})"),
                 callingTool("type_text", R"({"text":"end\n"})"), ScriptedTurn::saying({"Typed."})});
    const QString typed = morvane.home() + u"/typed"_s;
    startProgram(morvane, u"xterm"_s, {u"-u8"_s, u"-e"_s, u"sh"_s, u"-c"_s, u"cat > "_s + typed});
    morvane.start();
    morvane.send(u"Type a lot"_s);
    const auto content = [&typed] {
        QFile file(typed);
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    };
    ASSERT_TRUE(waitUntil([&] { return content().count(u'\n') > 20; }))
        << results(morvane).join(u'\n').toStdString();
    // A key that the program types in between can end the choice of a window.
    const auto terminal = morvane.screen().activeWindow();
    ASSERT_TRUE(
        pressUntil(morvane, u"Alt+Tab"_s, [&] { return morvane.screen().activeWindow() != terminal; }));
    ASSERT_TRUE(waitUntil([&] { return results(morvane).size() == 2; }));
    EXPECT_THAT(lastResult(morvane).toStdString(),
                testing::AllOf(
                    testing::StartsWith("Error: typing was stopped after "),
                    testing::EndsWith(" of 3000 characters, because the user turned to Morvane's window.")));
    morvane.keyboard().press(u"Escape"_s);
    ASSERT_TRUE(morvane.ear().hears(u"Generation cancelled."_s));
    // Nothing that was meant for the other program has been sent to the model.
    morvane.send(u"Only one line more"_s);
    ASSERT_TRUE(morvane.ear().hears(u"Typed."_s));
    EXPECT_FALSE(morvane.program().tree(TreePart::whole).description().contains(u"You said ß"_s));
    ASSERT_TRUE(waitUntil([&] { return content().endsWith(u"end\n"_s); })) << content().toStdString();
    EXPECT_LT(content().count(u'\n'), lines);
    // The Tab of the choice of a window is the terminal's when it comes between two keys that the program
    // types.
    EXPECT_EQ(content().remove(u'ß').remove(u'\n').remove(u'\t'), u"end"_s);
}

TEST_F(DesktopTest, QuittingInTheMiddleOfATextLetsGoOfTheKeysAndGivesThemBack)
{
    MorvaneSession &morvane = startTypingALot();
    EXPECT_NE(keyboardMapping(morvane.screen()), m_keys) << "some are in use";
    morvane.quit();
    EXPECT_EQ(keyboardMapping(morvane.screen()), m_keys);
    EXPECT_EQ(heldKeys(morvane.screen()), QByteArray(32, '\0'));
    EXPECT_LT(QFile(m_typed).size(), 3000);
}

TEST_F(DesktopTest, WhatACrashLeavesOnTheKeysIsTakenOffWithTheNextStart)
{
    MorvaneSession &morvane = startTypingALot();
    morvane.program().process().kill();
    morvane.keyboard().releaseAll(); // it may have held one
    EXPECT_NE(keyboardMapping(morvane.screen()), m_keys) << "some are in use";
    morvane.start();
    EXPECT_TRUE(waitUntil([&] { return keyboardMapping(morvane.screen()) == m_keys; }));
}

TEST_F(DesktopTest, NothingIsTypedOrPastedIntoTheMessageFieldNorSentByAKey)
{
    MorvaneSession &morvane = start(
        {callingTool("type_text", R"({"text":"words\n"})"), callingTool("paste_text", R"({"text":"words"})"),
         callingTool("press_key", R"({"key":"x"})"), callingTool("press_key", R"({"key":"escape"})"),
         ScriptedTurn::saying({"Nothing was typed."})});
    morvane.send(u"Type something"_s);
    ASSERT_TRUE(morvane.ear().hears(u"Nothing was typed."_s));
    const QStringList answers = results(morvane);
    EXPECT_EQ(answers.size(), 4);
    for (const QString &answer : answers)
        EXPECT_TRUE(
            answer.startsWith(u"Error: nothing was typed, because Morvane's own window is in front."_s))
            << answer.toStdString();
    EXPECT_EQ(morvane.program().find(u"Message Morvane"_s).text(), QString());
}

TEST_F(DesktopTest, WhatWasPutOnTheClipboardCanBePastedAfterMorvaneHasEnded)
{
    for (const int size : {12, 10'000'000}) {
        const std::string text(std::size_t(size), 'x');
        MorvaneSession &morvane = start({callingTool("clipboard_set", "{\"text\":\"" + text + "end\"}"),
                                         ScriptedTurn::saying({"It is copied."})});
        const ClipboardManager manager(morvane.desktop().display());
        morvane.send(u"Copy it"_s);
        ASSERT_TRUE(morvane.ear().hears(u"It is copied."_s));
        morvane.quit();
        EXPECT_TRUE(manager.hasSaved());
        const auto left = XConnection(morvane.desktop().display()).clipboardText();
        EXPECT_TRUE(left == QString::fromStdString(text) + u"end"_s) << left.value_or(QString()).size();
    }
}

} // namespace
} // namespace morvane
