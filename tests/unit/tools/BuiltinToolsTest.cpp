#include "tools/BuiltinTools.h"

#include "async/Cancelled.h"
#include "base/Json.h"
#include "net/HttpClient.h"
#include "platform/NotificationCenter.h"
#include "support/FakeBrowser.h"
#include "support/FakeClock.h"
#include "support/FakeDesktop.h"
#include "support/QuietReminders.h"
#include "support/RunTask.h"
#include "support/TemporaryHome.h"
#include "support/WillingUser.h"
#include "tools/screen/ScreenTools.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

AIToolCall call(const QString &name, const char *arguments = "{}")
{
    return {name, parseJsonObject(arguments).value(), {}, {}};
}

class BuiltinToolsTest : public testing::Test {
protected:
    QString execute(const QString &name, const char *arguments = "{}")
    {
        return runTask(scheduler, tools.execute(user.permit(call(name, arguments)))).text;
    }

    FakeClock clock;
    Scheduler scheduler{clock};
    WillingUser user{scheduler};
    HttpClient http;
    TemporaryHome home;
    QuietReminders reminders{scheduler, home.path("Morvane.conf")};
    FakeDesktop desktop;
    ScreenTools screen{desktop.desktop()};
    FakeBrowser browser;
    BuiltinTools tools{http, reminders.store, screen, browser};
};

TEST_F(BuiltinToolsTest, OffersNothingWhenToolsAreOff)
{
    EXPECT_TRUE(BuiltinTools::all(UseTools::no).isEmpty());
}

TEST_F(BuiltinToolsTest, OffersFortyOneToolsWhenToolsAreOn)
{
    EXPECT_EQ(BuiltinTools::all(UseTools::yes).size(), 41);
}

TEST_F(BuiltinToolsTest, CarriesOutTheCalculator)
{
    EXPECT_EQ(execute("calculate", R"({"expression": "6*7"})"), "The result is 42.");
}

TEST_F(BuiltinToolsTest, CalculateWithoutATextSaysWhatItNeeds)
{
    const QString expected = "Error: the calculate tool needs an expression argument.";
    EXPECT_EQ(execute("calculate"), expected);
    EXPECT_EQ(execute("calculate", R"({"expression": 5})"), expected);
    EXPECT_EQ(execute("calculate", R"({"expression": null})"), expected);
    EXPECT_EQ(execute("calculate", R"({"expression": ""})"), "Error: empty expression.");
}

TEST_F(BuiltinToolsTest, TellsTheTime)
{
    EXPECT_TRUE(
        execute("get_current_datetime", R"({"unasked": 1})").startsWith("The current date and time is "));
}

TEST_F(BuiltinToolsTest, KeepsTheTodoList)
{
    EXPECT_EQ(execute("todo_list", R"({"items": ["a", "b"]})"), "Todo list:\n1. a\n2. b");
    EXPECT_EQ(execute("todo_list", R"({"items": []})"), "Todo list cleared.");
    EXPECT_EQ(execute("todo_list"), "Todo list cleared.");
    EXPECT_EQ(execute("todo_list", R"({"items": "a"})"), "Todo list cleared.");
}

TEST_F(BuiltinToolsTest, SetsListsAndCancelsReminders)
{
    EXPECT_EQ(execute("set_reminder", R"({"message": "time to stretch", "minutes": 2})"),
              "Reminder set: \"time to stretch\" in 2 minutes.");
    const QString list = execute("list_reminders");
    ASSERT_TRUE(list.startsWith("Pending reminders:\n")) << list.toStdString();
    const QByteArray id = list.section('\n', 1).first(8).toUtf8();
    const QByteArray arguments = "{\"id\": \"" + id + "\"}";
    EXPECT_EQ(execute("cancel_reminder", arguments.constData()),
              "Cancelled the reminder \"time to stretch\".");
    EXPECT_EQ(execute("list_reminders"), "There are no pending reminders.");
}

TEST_F(BuiltinToolsTest, MinutesThatAreMissingOrNoNumberCountAsOne)
{
    const QString expected = "Reminder set: \"tea\" in 1 minutes.";
    EXPECT_EQ(execute("set_reminder", R"({"message": "tea"})"), expected);
    EXPECT_EQ(execute("set_reminder", R"({"message": "tea", "minutes": "5"})"), expected);
    EXPECT_EQ(execute("set_reminder", R"({"message": "tea", "minutes": true})"), expected);
    EXPECT_EQ(execute("set_reminder", R"({"message": "tea", "minutes": 5})"),
              "Reminder set: \"tea\" in 5 minutes.");
}

TEST_F(BuiltinToolsTest, ReminderToolsWithoutArgumentsAnswerForTheEmptyText)
{
    EXPECT_EQ(execute("set_reminder"), "Error: a reminder message is required.");
    EXPECT_EQ(execute("set_reminder", R"({"message": 5, "minutes": 1})"),
              "Error: a reminder message is required.");
    EXPECT_EQ(execute("cancel_reminder"),
              "Error: a reminder id is required. Use list_reminders to see the ids.");
}

TEST_F(BuiltinToolsTest, ReadsListsWritesEditsAndSearchesFiles)
{
    EXPECT_EQ(execute("write_file", R"({"path": "~/a.txt", "content": "one two"})"),
              "Wrote 7 characters to " + home.path("a.txt") + ".");
    EXPECT_EQ(execute("edit_file", R"({"file_path": "~/a.txt", "old_string": "two", "new_string": "2"})"),
              "Edited ~/a.txt: replaced 1 occurrence(s).");
    EXPECT_EQ(execute("read_file", R"({"path": "~/a.txt"})"), "one 2");
    EXPECT_EQ(execute("list_directory", R"({"path": "~"})"), "Contents of " + home.path() + ":\na.txt");
    EXPECT_EQ(execute("grep_search", R"({"pattern": "on[e]", "path": "~", "include": "*.txt"})"),
              home.path("a.txt") + ":1: one 2");
    EXPECT_EQ(execute("glob_find", R"({"pattern": "*.txt", "path": "~"})"), "a.txt");
}

TEST_F(BuiltinToolsTest, EditsAllOccurrencesOnlyWhenTold)
{
    home.write("a.txt", "x x");
    EXPECT_TRUE(execute("edit_file", R"({"file_path": "~/a.txt", "old_string": "x", "new_string": "y"})")
                    .startsWith("Error: the text to replace appears 2 times"));
    EXPECT_EQ(
        execute("edit_file",
                R"({"file_path": "~/a.txt", "old_string": "x", "new_string": "y", "replace_all": true})"),
        "Edited ~/a.txt: replaced 2 occurrence(s).");
}

TEST_F(BuiltinToolsTest, SearchesGoToTheHomeFolderUnlessToldOtherwise)
{
    home.write("deep/a.txt", "needle");
    EXPECT_EQ(execute("grep_search", R"({"pattern": "needle"})"), home.path("deep/a.txt") + ":1: needle");
    EXPECT_EQ(execute("glob_find", R"({"pattern": "**/a.*", "path": 7})"), "deep/a.txt");
    EXPECT_EQ(execute("grep_search", R"({"pattern": "needle", "path": ""})"),
              "Error: the path \"\" does not exist.");
}

TEST_F(BuiltinToolsTest, FileToolsWithoutArgumentsAnswerForTheEmptyText)
{
    EXPECT_EQ(execute("list_directory"), "Error: the path \"\" does not exist.");
    EXPECT_EQ(execute("read_file", R"({"path": 5})"), "Error: the file \"\" does not exist.");
    EXPECT_EQ(execute("write_file"), "Error writing : No such file or directory");
    EXPECT_EQ(execute("edit_file"), "Error: the text to find cannot be empty.");
    EXPECT_EQ(execute("grep_search"), "Error: empty search pattern.");
    EXPECT_EQ(execute("glob_find"), "Error: empty pattern.");
}

TEST_F(BuiltinToolsTest, FetchWithoutAnAddressAnswersForTheEmptyOne)
{
    EXPECT_EQ(execute("web_fetch"), "Error: invalid URL \"\".");
    EXPECT_EQ(execute("web_fetch", R"({"url": 5})"), "Error: invalid URL \"\".");
}

/// A desktop that breaks down when it is asked to show something.
class BrokenCenter final : public NotificationCenter {
public:
    explicit BrokenCenter(std::function<void()> breakDown) : m_breakDown(std::move(breakDown)) {}

    void setDelegate(WillPresent) override {}
    Task<bool> requestAuthorization() override { co_return true; }
    Task<NotificationAuthorization> authorizationStatus() override
    {
        m_breakDown();
        co_return NotificationAuthorization::authorized;
    }
    void add(const NotificationRequest &) override { m_breakDown(); }
    void removePending(const QString &) override {}

private:
    std::function<void()> m_breakDown;
};

TEST_F(BuiltinToolsTest, WhateverAToolThrowsIsAFailureInWordsOfOurOwn)
{
    for (const std::function<void()> &breakDown :
         {std::function<void()>([] { throw std::bad_alloc(); }), std::function<void()>([] { throw 7; }),
          std::function<void()>([] { throw Cancelled(); })}) {
        BrokenCenter center(breakDown);
        ReminderStore store(scheduler, home.path("Broken.conf"), center, reminders.sounds,
                            reminders.announcer);
        BuiltinTools broken(http, store, screen, browser);
        const ToolResult result =
            runTask(scheduler,
                    broken.execute(user.permit(call("set_reminder", R"({"message": "x", "minutes": 9})"))));
        EXPECT_EQ(result.text, "Error: the tool could not be carried out.");
        EXPECT_TRUE(result.failed);
    }
}

TEST_F(BuiltinToolsTest, AFailureIsKnownByItsFirstWord)
{
    EXPECT_TRUE(ToolResult("Error: no").failed);
    EXPECT_FALSE(ToolResult("Error writing /x: no").failed);
    EXPECT_FALSE(ToolResult("error: no").failed);
    EXPECT_FALSE(ToolResult("").failed);
}

TEST_F(BuiltinToolsTest, ACoordinateThatIsATextClicksAtZero)
{
    EXPECT_EQ(execute("click_at", R"({"x": "120", "y": 7.9})"), "Clicked at (0, 7).");
}

TEST_F(BuiltinToolsTest, ScrollingWithoutAnAmountScrollsByOne)
{
    EXPECT_EQ(execute("mouse_scroll"), "Scrolled the mouse wheel up.");
    EXPECT_EQ(desktop.log.events().count("scroll 12"), 8);
}

TEST_F(BuiltinToolsTest, CoordinatesBeyondEveryScreenStayWithinANumber)
{
    EXPECT_EQ(execute("mouse_move", R"({"x": 9000000000, "y": -9000000000})"),
              "Moved the cursor to (2147483647, -2147483648).");
}

TEST_F(BuiltinToolsTest, EveryToolOfTheScreenIsCarriedOut)
{
    for (const char *name :
         {"capture_screen", "ax_click", "ax_type", "type_text", "press_key", "click_at", "paste_text",
          "clipboard_read", "clipboard_set", "mouse_move", "mouse_double_click", "mouse_right_click",
          "mouse_drag", "mouse_scroll", "get_frontmost_app", "activate_app", "open_url", "open_application"})
        EXPECT_FALSE(execute(name).contains("unknown tool")) << name;
}

TEST_F(BuiltinToolsTest, ArgumentsReachTheToolsOfTheScreen)
{
    execute("mouse_drag", R"({"from_x": 1, "from_y": 2, "to_x": 13, "to_y": 26})");
    EXPECT_EQ(desktop.log.events().first(), "warp 1,2");
    EXPECT_EQ(desktop.log.events().last(), "left up 13,26");
    desktop.log.clear();
    execute("open_url", R"({"url": "https://example.com/", "application": "Browser"})");
    execute("open_application", R"({"name": "Notes"})");
    execute("clipboard_set", R"({"text": "copied"})");
    execute("press_key", R"({"key": "tab"})");
    EXPECT_EQ(desktop.log.events(),
              QStringList({"open address https://example.com/ in [Browser]", "open Notes", "clipboard copied",
                           "key down 48 flags 0", "sleep 20", "key up 48 flags 0"}));
}

TEST_F(BuiltinToolsTest, EachToolOfTheMouseDoesWhatItsNameSaysAtItsPoint)
{
    EXPECT_EQ(execute("click_at", R"({"x": 1, "y": 2})"), "Clicked at (1, 2).");
    EXPECT_EQ(execute("mouse_move", R"({"x": 1, "y": 2})"), "Moved the cursor to (1, 2).");
    EXPECT_EQ(execute("mouse_double_click", R"({"x": 1, "y": 2})"), "Double-clicked at (1, 2).");
    EXPECT_EQ(execute("mouse_right_click", R"({"x": 1, "y": 2})"), "Right-clicked at (1, 2).");
    EXPECT_EQ(execute("mouse_scroll", R"({"amount": -5})"), "Scrolled the mouse wheel down.");
    EXPECT_EQ(desktop.log.events().count("scroll -60"), 8);
}

TEST_F(BuiltinToolsTest, EachToolOfTheKeyboardAndTheClipboardDoesWhatItsNameSays)
{
    EXPECT_EQ(execute("type_text", R"({"text": "ab"})"), "Typed 2 characters.");
    EXPECT_EQ(execute("press_key", R"({"key": "Tab"})"), "Pressed Tab.");
    EXPECT_EQ(execute("paste_text", R"({"text": "abc"})"), "Pasted 3 characters into the focused app.");
    EXPECT_EQ(execute("clipboard_read"), "Clipboard content: abc");
    EXPECT_EQ(execute("clipboard_set", R"({"text": "abcd"})"), "Copied 4 characters to the clipboard.");
}

TEST_F(BuiltinToolsTest, EachToolOfElementsAndProgramsDoesWhatItsNameSays)
{
    desktop.applications->front = RunningApplication{7, "Editor"};
    desktop.applications->runningApplications = {{7, "Editor"}};
    const FakeElement field{"AXTextField", "Town", QRectF(10, 10, 10, 10), true, {}, {}, {}};
    desktop.elements->applications[7] = {"AXApplication", {}, {}, false, {field}, {}, {}};
    EXPECT_TRUE(execute("capture_screen").contains("[1] text field 'Town' at (15, 15)"));
    EXPECT_EQ(execute("ax_click", R"({"index": 1})"), "Pressed text field 'Town' at (15, 15).");
    EXPECT_EQ(execute("ax_type", R"({"index": 1, "text": "Ur"})"),
              "Set the contents of text field 'Town' to \"Ur\".");
    EXPECT_EQ(execute("get_frontmost_app"), "The frontmost application is Editor.");
    EXPECT_EQ(execute("activate_app", R"({"name": "editor"})"), "Activated editor.");
    EXPECT_EQ(execute("open_application", R"({"name": "Notes"})"), "Opened the Notes application.");
}

TEST_F(BuiltinToolsTest, EachToolOfTheBrowserReachesItWithItsArguments)
{
    EXPECT_EQ(execute("browser_open", R"({"url": "host.test"})"), "the page");
    execute("browser_read");
    execute("browser_click", R"({"number": 3})");
    execute("browser_type", R"({"number": 4, "text": "hello"})");
    execute("browser_type", R"({"number": 4, "text": "hello", "submit": true})");
    execute("browser_back");
    EXPECT_EQ(browser.log, QStringList({"open host.test", "read", "click 3", "type 4 [hello]",
                                        "type 4 [hello] and submit", "back"}));
}

TEST_F(BuiltinToolsTest, ArgumentsOfTheBrowserThatAreMissingReadAsTheirDefaults)
{
    execute("browser_open", R"({"url": 5})");
    execute("browser_click", R"({"number": "3"})");
    execute("browser_type", R"({"submit": 1})");
    EXPECT_EQ(browser.log, QStringList({"open ", "click 0", "type 0 []"}));
}

TEST_F(BuiltinToolsTest, OnlyTheWordUpScrollsUp)
{
    for (const char *direction : {"UP", "up", "left", "down", ""})
        execute("browser_scroll", (QByteArray(R"({"direction": ")") + direction + "\"}").constData());
    execute("browser_scroll");
    EXPECT_EQ(browser.log,
              QStringList({"scroll 1", "scroll 1", "scroll -1", "scroll -1", "scroll -1", "scroll -1"}));
}

TEST_F(BuiltinToolsTest, AnUnknownNameComesBackAsItWasSent)
{
    EXPECT_EQ(execute("fly"), "Error: unknown tool fly.");
    EXPECT_EQ(execute(""), "Error: unknown tool .");
    EXPECT_EQ(execute("Read_File", R"({"path": "/etc/hostname"})"), "Error: unknown tool Read_File.");
    EXPECT_EQ(execute("Calculate", R"({"expression": "1"})"), "Error: unknown tool Calculate.");
}

TEST_F(BuiltinToolsTest, ToolsOfTheAgentLoopAreUnknownHere)
{
    EXPECT_EQ(execute("task", R"({"description": "x"})"), "Error: unknown tool task.");
    EXPECT_EQ(execute("ask_user", R"({"question": "x"})"), "Error: unknown tool ask_user.");
}

TEST_F(BuiltinToolsTest, CancellationDoesNotStopWork)
{
    auto handle = scheduler.spawn(tools.execute(user.permit(call("todo_list", R"({"items": ["a"]})"))));
    handle.cancel();
    ASSERT_TRUE(waitUntil([&] { return handle.done(); }));
    EXPECT_EQ(handle.result().text, "Todo list:\n1. a");
}

TEST_F(BuiltinToolsTest, OnlyShellCommandsAreDestructive)
{
    EXPECT_FALSE(
        BuiltinTools::isDestructive(call("write_file", R"({"command": "rm -rf /", "destructive": true})")));
    EXPECT_FALSE(BuiltinTools::isDestructive(call("run_shell_command")));
    EXPECT_TRUE(BuiltinTools::isDestructive(call("run_shell_command", R"({"command": "rm -rf /"})")));
}

TEST_F(BuiltinToolsTest, AModelCanDeclareACommandDestructiveButNotHarmless)
{
    EXPECT_TRUE(
        BuiltinTools::isDestructive(call("run_shell_command", R"({"command": "ls", "destructive": true})")));
    EXPECT_TRUE(BuiltinTools::isDestructive(
        call("run_shell_command", R"({"command": "rm -rf /", "destructive": false})")));
    EXPECT_FALSE(BuiltinTools::isDestructive(
        call("run_shell_command", R"({"command": "ls", "destructive": "true"})")));
    EXPECT_FALSE(
        BuiltinTools::isDestructive(call("run_shell_command", R"({"command": "ls", "destructive": 1})")));
}

TEST_F(BuiltinToolsTest, ACommandThatIsNoTextIsNotDestructive)
{
    EXPECT_FALSE(
        BuiltinTools::isDestructive(call("run_shell_command", R"({"command": ["rm", "-rf", "/"]})")));
}

} // namespace
} // namespace morvane
