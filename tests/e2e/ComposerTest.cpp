#include "MorvaneTest.h"

#include "support/ClipboardOwner.h"
#include "support/WaitUntil.h"
#include "support/XConnection.h"

#include <QJsonArray>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// A text too long for the message field, as a screen reader meets it and as the model gets it.
class ComposerTest : public MorvaneTest {
protected:
    const QString m_long = u"one word after the other, "_s.repeated(6'000);
    const QString m_label = u"[Pasted text, 156.0 kB]"_s;
    const int m_labelSize = static_cast<int>(m_label.size());
    const QString m_field = u"Message Morvane"_s;
};

TEST_F(ComposerTest, ALongTextIsReadAsItsLabelAndSentAsItself)
{
    MorvaneSession &morvane = start({ScriptedTurn::saying({"Read."})});
    ASSERT_TRUE(morvane.program().focuses(m_field));
    const AccessibleElement field = morvane.program().find(m_field);
    const ClipboardOwner clipboard(morvane.display(), {{"UTF8_STRING", m_long.toUtf8()}});
    const Keyboard &keyboard = morvane.keyboard();
    keyboard.type(u"ab"_s);
    keyboard.press(u"Ctrl+V"_s);
    ASSERT_TRUE(waitUntil([&] { return field.text() == u"ab"_s + m_label; }));
    EXPECT_EQ(field.caret(), 2 + m_labelSize);
    keyboard.press(u"Left"_s);
    EXPECT_TRUE(waitUntil([&] { return field.caret() == 2; }));
    keyboard.press(u"Shift+Right"_s);
    EXPECT_TRUE(waitUntil([&] { return field.selectedText() == m_label; }));
    keyboard.press(u"Right"_s);
    keyboard.type(u"cd"_s);
    ASSERT_TRUE(waitUntil([&] { return field.text() == u"ab"_s + m_label + u"cd"_s; }));
    EXPECT_EQ(field.caret(), 4 + m_labelSize);
    keyboard.press(u"Return"_s);
    EXPECT_TRUE(waitUntil([&] { return field.text().isEmpty(); }));
    ASSERT_TRUE(morvane.ear().hears(u"Read."_s));
    ASSERT_TRUE(morvane.storesLastMessage(u"text"_s, u"Read."_s));
    const auto messages = morvane.storedConversations().first().value("messages"_L1).toArray();
    EXPECT_EQ(messages.first().toObject().value("text"_L1).toString(), u"ab"_s + m_long + u"cd"_s);
}

TEST_F(ComposerTest, AMegabyteThatAReaderWritesIsOneLabelAndOneMessage)
{
    MorvaneSession &morvane = start({ScriptedTurn::saying({"Read."})});
    ASSERT_TRUE(morvane.program().focuses(m_field));
    const AccessibleElement field = morvane.program().find(m_field);
    const QString text = u"one word after the other, "_s.repeated(40'000) + u"end"_s;
    field.setText(u"replaced"_s);
    field.setText(text);
    EXPECT_TRUE(waitUntil([&] { return field.text() == u"[Pasted text, 1.0 MB]"_s; }));
    field.insertText(0, u"look: "_s);
    EXPECT_EQ(field.text(), u"look: [Pasted text, 1.0 MB]"_s);
    morvane.keyboard().press(u"Return"_s);
    ASSERT_TRUE(morvane.ear().hears(u"Read."_s));
    ASSERT_TRUE(morvane.storesLastMessage(u"text"_s, u"Read."_s));
    const auto messages = morvane.storedConversations().first().value("messages"_L1).toArray();
    EXPECT_TRUE(messages.first().toObject().value("text"_L1).toString() == u"look: "_s + text);
}

TEST_F(ComposerTest, APastedTextIsReadFromTheMenu)
{
    MorvaneSession &morvane = start({});
    ASSERT_TRUE(morvane.program().focuses(m_field));
    const ClipboardOwner clipboard(morvane.display(), {{"UTF8_STRING", m_long.toUtf8()}});
    morvane.keyboard().press(u"Ctrl+V"_s);
    ASSERT_TRUE(waitUntil([&] { return morvane.program().find(m_field).text() == m_label; }));
    morvane.keyboard().press(u"Shift+F10"_s);
    morvane.keyboard().press(u"Return"_s); // its first entry
    ASSERT_TRUE(morvane.program().focuses(u"Pasted Text"_s));
    morvane.keyboard().press(u"Escape"_s);
    EXPECT_TRUE(morvane.program().focuses(m_field));
}

TEST_F(ComposerTest, TheProgramEndsWhileAPasteIsAwaited)
{
    MorvaneSession &morvane = startToBeEndedByKey();
    ASSERT_TRUE(morvane.program().focuses(m_field));
    const XConnection frozen(morvane.display());
    const xcb_window_t window = frozen.openHiddenWindow();
    xcb_set_selection_owner(frozen.handle(), window, frozen.atom("CLIPBOARD"), XCB_CURRENT_TIME);
    static_cast<void>(frozen.activeWindow());
    morvane.keyboard().press(u"Ctrl+V"_s);
    morvane.keyboard().press(u"Ctrl+Q"_s);
    EXPECT_EQ(morvane.program().process().waitForExit(), 0);
}

TEST_F(ComposerTest, AProgramThatHangsWithTheClipboardHoldsNothingUp)
{
    MorvaneSession &morvane = start({});
    ASSERT_TRUE(morvane.program().focuses(m_field));
    const AccessibleElement field = morvane.program().find(m_field);
    const Keyboard &keyboard = morvane.keyboard();
    {
        const XConnection frozen(morvane.display());
        const xcb_window_t window = frozen.openHiddenWindow();
        xcb_set_selection_owner(frozen.handle(), window, frozen.atom("CLIPBOARD"), XCB_CURRENT_TIME);
        static_cast<void>(frozen.activeWindow());
        keyboard.press(u"Ctrl+V"_s);
        keyboard.type(u"typed"_s);
        EXPECT_TRUE(waitUntil([&] { return field.text() == u"typed"_s; }));
        const auto given = u"Nothing was pasted. The program that you copied from does not answer."_s;
        EXPECT_TRUE(morvane.ear().hears(given));
        morvane.ear().forget();
        field.pasteText(0);
        keyboard.type(u" more"_s);
        EXPECT_TRUE(waitUntil([&] { return field.text() == u"typed more"_s; }));
        EXPECT_TRUE(morvane.ear().hears(given));
    }
    const ClipboardOwner willing(morvane.display(), {{"UTF8_STRING", "pasted"}});
    keyboard.press(u"Ctrl+V"_s);
    EXPECT_TRUE(waitUntil([&] { return field.text() == u"typed morepasted"_s; }));
    field.pasteText(5); // the caret stays behind it
    EXPECT_TRUE(waitUntil([&] { return field.text() == u"typedpasted morepasted"_s; }));
}

} // namespace
} // namespace morvane
