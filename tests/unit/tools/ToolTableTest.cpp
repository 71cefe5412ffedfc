#include "tools/ToolTable.h"

#include <QFile>
#include <QSet>
#include <algorithm>
#include <boost/json.hpp>
#include <gtest/gtest.h>

namespace morvane {
namespace {

const AITool &tool(QLatin1StringView name)
{
    for (const AITool &candidate : toolTable())
        if (candidate.name == name)
            return candidate;
    ADD_FAILURE() << "no tool " << name.data();
    return toolTable().front();
}

QStringList keys(const boost::json::object &object)
{
    QStringList names;
    for (const auto &member : object)
        names.append(QString::fromUtf8(member.key().data(), static_cast<qsizetype>(member.key().size())));
    return names;
}

TEST(ToolTableTest, HoldsTheToolsInTheirFixedOrder)
{
    const QStringList expected{"get_current_datetime",
                               "calculate",
                               "list_directory",
                               "read_file",
                               "write_file",
                               "run_shell_command",
                               "web_search",
                               "web_fetch",
                               "grep_search",
                               "glob_find",
                               "edit_file",
                               "todo_list",
                               "task",
                               "open_url",
                               "open_application",
                               "capture_screen",
                               "browser_open",
                               "browser_read",
                               "browser_click",
                               "browser_type",
                               "browser_scroll",
                               "browser_back",
                               "ask_user",
                               "ax_click",
                               "ax_type",
                               "type_text",
                               "press_key",
                               "click_at",
                               "paste_text",
                               "clipboard_read",
                               "clipboard_set",
                               "mouse_move",
                               "mouse_double_click",
                               "mouse_right_click",
                               "mouse_drag",
                               "mouse_scroll",
                               "get_frontmost_app",
                               "activate_app",
                               "set_reminder",
                               "list_reminders",
                               "cancel_reminder"};
    QStringList names;
    for (const AITool &candidate : toolTable())
        names.append(candidate.name);
    EXPECT_EQ(names, expected);
}

/// One tool as it stands in ToolTexts.txt.
QString written(const AITool &candidate)
{
    QString text = candidate.name + "\n  " + candidate.description + '\n';
    const auto &required = candidate.schema->at("required").as_array();
    for (const auto &property : candidate.schema->at("properties").as_object()) {
        const auto &schema = property.value().as_object();
        QString type = QString::fromUtf8(boost::json::value_to<std::string>(schema.at("type")));
        if (type == "array")
            type +=
                " of " + QString::fromUtf8(boost::json::value_to<std::string>(schema.at("items").at("type")));
        const bool isRequired = std::find(required.begin(), required.end(), property.key()) != required.end();
        text += "  - " + QString::fromUtf8(std::string(property.key())) + " (" + type + ", " +
                (isRequired ? "required)" : "optional)");
        if (const auto *const description = schema.if_contains("description"))
            text += ": " + QString::fromUtf8(boost::json::value_to<std::string>(*description));
        text += '\n';
    }
    return text;
}

TEST(ToolTableTest, EveryWordStandsAsItIsToBe)
{
    QFile file(QString(MORVANE_SOURCE_DIR) + "/tests/unit/tools/ToolTexts.txt");
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QStringList expected = QString::fromUtf8(file.readAll()).split("\n\n");
    ASSERT_EQ(expected.size(), toolTable().size());
    for (qsizetype i = 0; i < expected.size(); ++i)
        EXPECT_EQ(written(toolTable().at(i)).trimmed(), expected.at(i).trimmed());
}

TEST(ToolTableTest, TheRoadOfACallIsFoundByItsName)
{
    EXPECT_EQ(toolRoad("ask_user"), ToolRoad::question);
    EXPECT_EQ(toolRoad("task"), ToolRoad::subagent);
    EXPECT_EQ(toolRoad("mcp_files_read"), ToolRoad::server);
    EXPECT_EQ(toolRoad("read_file"), ToolRoad::builtIn);
    EXPECT_EQ(toolRoad("Task"), ToolRoad::builtIn);
    EXPECT_EQ(toolRoad(""), ToolRoad::builtIn);
}

TEST(ToolTableTest, EverySchemaIsAnObjectWithTypePropertiesAndRequiredInThisOrder)
{
    for (const AITool &candidate : toolTable()) {
        EXPECT_EQ(keys(candidate.schema.get()), QStringList({"type", "properties", "required"}))
            << candidate.name.toStdString();
        EXPECT_EQ(candidate.schema->at("type").as_string(), "object");
    }
}

TEST(ToolTableTest, EveryRequiredNameIsADeclaredProperty)
{
    for (const AITool &candidate : toolTable()) {
        const auto &properties = candidate.schema->at("properties").as_object();
        for (const auto &name : candidate.schema->at("required").as_array())
            EXPECT_TRUE(properties.contains(name.as_string())) << candidate.name.toStdString();
    }
}

TEST(ToolTableTest, AToolWithoutParametersHasEmptyPropertiesAndRequired)
{
    for (const char *const name : {"get_current_datetime", "capture_screen", "browser_read", "browser_back",
                                   "clipboard_read", "get_frontmost_app", "list_reminders"}) {
        const AITool &candidate = tool(QLatin1StringView(name));
        EXPECT_TRUE(candidate.schema->at("properties").as_object().empty()) << name;
        EXPECT_TRUE(candidate.schema->at("required").as_array().empty()) << name;
    }
}

TEST(ToolTableTest, OnlyTheCoordinatesOfTheMouseToolsHaveNoDescription)
{
    const QSet<QString> bare{"mouse_move", "mouse_double_click", "mouse_right_click", "mouse_drag"};
    for (const AITool &candidate : toolTable()) {
        for (const auto &property : candidate.schema->at("properties").as_object()) {
            EXPECT_EQ(property.value().as_object().contains("description"), !bare.contains(candidate.name))
                << candidate.name.toStdString();
        }
    }
}

TEST(ToolTableTest, APropertyOfTypeArrayHoldsStrings)
{
    const auto &items = tool(QLatin1StringView("todo_list")).schema->at("properties").at("items").as_object();
    EXPECT_EQ(keys(items), QStringList({"type", "description", "items"}));
    EXPECT_EQ(items.at("type").as_string(), "array");
    EXPECT_EQ(items.at("items"), (boost::json::object{{"type", "string"}}));
}

TEST(ToolTableTest, PropertiesComeAsDeclared)
{
    const auto &schema = tool(QLatin1StringView("edit_file")).schema.get();
    EXPECT_EQ(keys(schema.at("properties").as_object()),
              QStringList({"file_path", "old_string", "new_string", "replace_all"}));
    EXPECT_EQ(schema.at("required"), (boost::json::array{"file_path", "old_string", "new_string"}));
    EXPECT_EQ(schema.at("properties").at("replace_all").at("type").as_string(), "boolean");
    EXPECT_EQ(
        tool(QLatin1StringView("set_reminder")).schema->at("properties").at("minutes").at("type").as_string(),
        "number");
    EXPECT_EQ(
        tool(QLatin1StringView("browser_click")).schema->at("properties").at("number").at("type").as_string(),
        "integer");
}

TEST(ToolTableTest, NoDescriptionHoldsAPlaceholder)
{
    for (const AITool &candidate : toolTable()) {
        EXPECT_FALSE(candidate.description.isEmpty());
        EXPECT_EQ(boost::json::serialize(candidate.schema.get()).find("{address"), std::string::npos);
    }
}

TEST(ToolTableTest, IsBuiltOnce)
{
    EXPECT_EQ(&toolTable(), &toolTable());
}

} // namespace
} // namespace morvane
