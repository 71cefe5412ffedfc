#include "tools/ToolDescription.h"

#include "base/Json.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

QString described(const QString &name, const char *arguments = "{}")
{
    return describe({name, parseJsonObject(arguments).value(), {}, {}}).phrase;
}

const QString warning = ". Warning: this is a destructive action that may delete data or be hard to undo";

TEST(ToolDescriptionTest, NamesShellCommandsAndFiles)
{
    EXPECT_EQ(described("run_shell_command", R"({"command": "ls -la"})"), "run the command: ls -la");
    EXPECT_EQ(described("run_shell_command"), "run the command: an unknown command");
    EXPECT_EQ(described("write_file", R"({"path": "/tmp/a", "content": "x"})"), "write a file at /tmp/a");
    EXPECT_EQ(described("write_file"), "write a file at an unknown location");
    EXPECT_EQ(described("edit_file", R"({"file_path": "/tmp/a"})"), "edit the file at /tmp/a");
    EXPECT_EQ(described("edit_file", R"({"file_path": 7})"), "edit the file at an unknown file");
}

TEST(ToolDescriptionTest, NamesWhatIsClickedAndTyped)
{
    EXPECT_EQ(described("click_at", R"({"x": 10, "y": -20})"), "click at (10, -20)");
    EXPECT_EQ(described("ax_click", R"({"index": 3})"), "click element [3] from the last screen capture");
    EXPECT_EQ(described("ax_type", R"({"index": 3, "text": "hi"})"), "type \"hi\" into element [3]");
    EXPECT_EQ(described("type_text", R"({"text": "hi"})"), "type \"hi\" into the focused app");
    EXPECT_EQ(described("press_key", R"({"key": "command+v"})"), "press command+v");
    EXPECT_EQ(described("capture_screen"), "look at the screen");
}

TEST(ToolDescriptionTest, NamesWhatIsOpenedAndSearched)
{
    EXPECT_EQ(described("open_url", R"({"url": "https://example.com"})"), "open https://example.com");
    EXPECT_EQ(described("web_search", R"({"query": "news"})"), "search the web for \"news\"");
    EXPECT_EQ(described("browser_open", R"({"url": "https://example.com"})"),
              "open https://example.com in the Morvane browser");
    EXPECT_EQ(described("browser_click", R"({"number": 4})"), "click element [4] in the Morvane browser");
    EXPECT_EQ(described("browser_type", R"({"number": 4, "text": "x"})"),
              "type \"x\" in the Morvane browser");
    for (const char *const name : {"browser_read", "browser_back", "browser_scroll"})
        EXPECT_EQ(described(name), "work in the Morvane browser");
}

TEST(ToolDescriptionTest, AnyOtherToolIsNamedAsItIs)
{
    EXPECT_EQ(described("mouse_move", R"({"x": 1})"), "use the mouse_move tool");
    EXPECT_EQ(described("mcp_files_read"), "use the mcp_files_read tool");
    EXPECT_EQ(described(""), "use the  tool");
    EXPECT_EQ(described("Write_File"), "use the Write_File tool");
}

TEST(ToolDescriptionTest, AnIntegerOfAnotherTypeReadsAsZero)
{
    EXPECT_EQ(described("click_at"), "click at (0, 0)");
    EXPECT_EQ(described("click_at", R"({"x": "120", "y": null})"), "click at (0, 0)");
    EXPECT_EQ(described("click_at", R"({"x": 3.9, "y": 1e300})"), "click at (3, 0)");
    EXPECT_EQ(described("ax_click", R"({"index": []})"), "click element [0] from the last screen capture");
}

TEST(ToolDescriptionTest, AQueryOfAHundredCharactersIsCutToSixtyWithoutAMark)
{
    const QString query(100, u'q');
    EXPECT_EQ(described("web_search", ("{\"query\": \"" + query + "\"}").toUtf8().constData()),
              "search the web for \"" + QString(60, u'q') + "\"");
}

TEST(ToolDescriptionTest, QuotedTextIsCutByWhatAUserSees)
{
    const QString family = u"👩‍👩‍👧"_qs;
    EXPECT_EQ(described("type_text", ("{\"text\": \"" + family.repeated(61) + "\"}").toUtf8().constData()),
              "type \"" + family.repeated(60) + "\" into the focused app");
}

TEST(ToolDescriptionTest, OnlyQuotedTextsAreCut)
{
    const QString command = "echo " + QString(200, u'a');
    EXPECT_EQ(described("run_shell_command", ("{\"command\": \"" + command + "\"}").toUtf8().constData()),
              "run the command: " + command);
}

TEST(ToolDescriptionTest, ADestructiveCommandCarriesTheWarning)
{
    EXPECT_EQ(described("run_shell_command", R"({"command": "rm -rf /tmp/x"})"),
              "run the command: rm -rf /tmp/x" + warning);
    EXPECT_EQ(described("run_shell_command", R"({"command": "ls", "destructive": true})"),
              "run the command: ls" + warning);
    EXPECT_EQ(described("run_shell_command", R"({"destructive": true})"),
              "run the command: an unknown command" + warning);
    EXPECT_EQ(described("write_file", R"({"path": "a", "destructive": true})"), "write a file at a");
}

TEST(ToolDescriptionTest, ArgumentsAreNotTakenForPlaceholders)
{
    EXPECT_EQ(described("browser_open", R"({"url": "%1%2"})"), "open %1%2 in the Morvane browser");
}

} // namespace
} // namespace morvane
