#include "BuildTree.h"
#include "MorvaneTest.h"

#include "support/WaitUntil.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// Tool servers: added, used, switched and removed, and those that never answer.
class ToolServersTest : public MorvaneTest {
protected:
    static QString serverProgram() { return build_tree::program(u"scripted-tool-server"_s); }
    static QString pidFile(const MorvaneSession &morvane) { return morvane.home() + u"/pids"_s; }

    static void openToolServers(MorvaneSession &morvane)
    {
        openSettings(morvane);
        morvane.keyboard().press(u"Ctrl+Tab"_s);
        morvane.keyboard().press(u"Ctrl+Tab"_s);
        ASSERT_TRUE(morvane.program().shows(u"Add a tool server"_s));
    }
    static void writeServers(const MorvaneSession &morvane, const QString &command)
    {
        const QString folder = morvane.home() + u"/.local/share/Morvane"_s;
        QDir().mkpath(folder);
        QFile file(folder + u"/mcp-servers.json"_s);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(
            u"[{\"id\":\"5C2D4B9E-0B51-4C4C-8B5B-2F6B7D0B4E11\",\"name\":\"Mine\",\"transport\":\"stdio\","
            "\"command\":\"%1\",\"args\":[],\"url\":\"\",\"enabled\":true}]"_s.arg(command)
                .toUtf8());
    }
    static QList<QByteArray> pids(const MorvaneSession &morvane)
    {
        QFile file(pidFile(morvane));
        if (!file.open(QIODevice::ReadOnly))
            return {};
        QList<QByteArray> list = file.readAll().split('\n');
        list.removeAll(QByteArray());
        return list;
    }
    static bool areGone(const QList<QByteArray> &processes)
    {
        return waitUntil([&processes] {
            return std::none_of(processes.begin(), processes.end(), [](const QByteArray &process) {
                return QDir(u"/proc/"_s + QString::fromLatin1(process)).exists();
            });
        });
    }
    /// The names of the tools that the first request for an answer offered.
    static QStringList offeredTools(MorvaneSession &morvane)
    {
        QStringList names;
        for (const ScriptedRequest &request : morvane.model().requests()) {
            if (request.turn != 0)
                continue;
            for (const auto &tool : request.json.at("tools").as_array())
                names.append(QString::fromUtf8(tool.at("function").at("name").as_string().c_str()));
        }
        return names;
    }
};

TEST_F(ToolServersTest, AServerIsAddedByKeyboardUsedSwitchedOffAndOnAndRemoved)
{
    MorvaneSession &morvane = start({callingTool("mcp_my_server_echo", R"({"text":"heard by the server"})"),
                                     ScriptedTurn::saying({"It answered."})});
    openToolServers(morvane);
    morvane.program().find(u"Add a tool server"_s).takeFocus();
    ASSERT_TRUE(morvane.program().focuses(u"Add a tool server"_s));
    morvane.keyboard().press(u"Space"_s);
    ASSERT_TRUE(morvane.program().focuses(u"Server name"_s));
    morvane.keyboard().type(u"My Server"_s);
    morvane.keyboard().press(u"Tab"_s);
    morvane.keyboard().press(u"Tab"_s);
    ASSERT_TRUE(morvane.program().focuses(u"Command"_s));
    morvane.keyboard().type(serverProgram());
    morvane.keyboard().press(u"Tab"_s);
    ASSERT_TRUE(morvane.program().focuses(u"Arguments"_s));
    morvane.keyboard().type(u"--pids "_s + pidFile(morvane));
    morvane.keyboard().press(u"Return"_s);
    const QString connected = u"My Server, Connected via command · 18 tools"_s;
    ASSERT_TRUE(morvane.program().shows(connected));
    closeSettings(morvane);

    morvane.send(u"Use my server"_s);
    ASSERT_TRUE(morvane.program().shows(u"Morvane said It answered."_s));
    EXPECT_EQ(lastResult(morvane), u"heard by the server"_s);
    EXPECT_TRUE(offeredTools(morvane).contains(u"mcp_my_server_echo"_s));

    openToolServers(morvane);
    ASSERT_TRUE(morvane.program().shows(connected));
    morvane.program().find(connected).act(u"Toggle"_s);
    ASSERT_TRUE(morvane.program().shows(u"My Server, Off"_s));
    EXPECT_TRUE(areGone(pids(morvane)));
    morvane.program().find(u"My Server, Off"_s).act(u"Toggle"_s);
    ASSERT_TRUE(morvane.program().shows(connected));
    morvane.program().find(u"Remove the My Server server"_s).press();
    ASSERT_TRUE(morvane.program().shows(u"No tool servers yet."_s));
    EXPECT_TRUE(areGone(pids(morvane)));
}

TEST_F(ToolServersTest, WhatLiesBelowTheFormIsNotSwitchedByAssistiveTechnology)
{
    MorvaneSession &morvane = prepare({});
    writeServers(morvane, serverProgram());
    morvane.start();
    openToolServers(morvane);
    const AccessibleElement server = morvane.program().find(u"Mine, Connected via command · 18 tools"_s);
    morvane.program().find(u"Add a tool server"_s).press();
    ASSERT_TRUE(morvane.program().focuses(u"Server name"_s));
    server.act(u"Toggle"_s);
    EXPECT_TRUE(server.has(AccessibleState::checked));
    const AccessibleElement name = morvane.program().find(u"Server name"_s, AccessibleRole::text);
    name.setText(u"written in the form"_s);
    EXPECT_EQ(name.text(), u"written in the form"_s);
    morvane.program().find(u"Cancel"_s).press();
    ASSERT_TRUE(morvane.program().hides(u"Server name"_s));
    server.act(u"Toggle"_s);
    EXPECT_TRUE(morvane.program().shows(u"Mine, Off"_s));
}

TEST_F(ToolServersTest, AServerThatNeverAnswersHoldsUpNeitherWindowNorAgent)
{
    MorvaneSession &morvane = prepare({ScriptedTurn::saying({"Heard."})});
    writeServers(morvane, serverProgram() + u" --silent --stubborn --pids "_s + pidFile(morvane));
    morvane.start();
    ASSERT_TRUE(waitUntil([&] { return pids(morvane).size() == 1; }));
    morvane.send(u"Hello"_s);
    ASSERT_TRUE(morvane.program().shows(u"Morvane said Heard."_s));
    EXPECT_TRUE(offeredTools(morvane).filter(u"mcp_"_s).isEmpty());
    morvane.quit();
    EXPECT_TRUE(areGone(pids(morvane)));
}

TEST_F(ToolServersTest, AServerOfTheListIsThereAfterTheStartAndGoneWithAKilledProgram)
{
    MorvaneSession &morvane = prepare({});
    writeServers(morvane, serverProgram() + u" --stubborn --family --pids "_s + pidFile(morvane));
    morvane.start();
    ASSERT_TRUE(waitUntil([&] { return pids(morvane).size() == 3; }));
    morvane.program().process().kill();
    EXPECT_TRUE(areGone(pids(morvane)));
}

TEST_F(ToolServersTest, StoppingARunEndsACallThatIsNeverAnswered)
{
    MorvaneSession &morvane =
        prepare({callingTool("mcp_mine_never", "{}"), ScriptedTurn::saying({"Again."})});
    writeServers(morvane, serverProgram());
    morvane.start();
    openToolServers(morvane);
    ASSERT_TRUE(morvane.program().shows(u"Mine, Connected via command · 18 tools"_s));
    closeSettings(morvane);
    morvane.send(u"Wait for ever"_s);
    ASSERT_TRUE(morvane.program().shows(u"Status. Running mcp_mine_never…"_s));
    morvane.program().find(u"Stop generating"_s).press();
    EXPECT_TRUE(morvane.program().shows(u"Status. Cancelled"_s));
}

} // namespace
} // namespace morvane
