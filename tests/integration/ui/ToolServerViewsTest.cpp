#include "ToolServerViewsFixture.h"

#include "ui/settings/MCPServersView.h"
#include "ui/settings/QuietText.h"

#include <QAccessible>
#include <QClipboard>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTabBar>
#include <QWindow>
#include <QWindowStateChangeEvent>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class ToolServerViewsTest : public ToolServerViewsFixture {
protected:
    static bool showsQuietly(const MCPServerRow *row, const QString &text)
    {
        const auto texts = row->findChildren<QuietText *>();
        return std::any_of(texts.begin(), texts.end(), [&text](const QuietText *quiet) {
            return quiet->isVisible() && quiet->text() == text;
        });
    }
    /// Whether a part of the row is drawn in this colour.
    bool isDrawnIn(MCPServerRow *row, QColor ThemeColors::*color) const
    {
        const QRgb wanted = (ThemeColors::fromPalette(row->palette()).*color).rgb();
        const QImage image = row->grab().toImage();
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (image.pixel(x, y) == wanted)
                    return true;
        return false;
    }
};

TEST_F(ToolServerViewsTest, WithoutServersTheViewSaysWhatTheyAre)
{
    showServers();
    EXPECT_TRUE(shows(u"Tool Servers"_s));
    EXPECT_TRUE(shows(u"No tool servers yet."_s));
    EXPECT_TRUE(
        shows(u"MCP (Model Context Protocol) servers add extra tools to Morvane — databases, browsers, "
              "calendars, anything with an MCP server. Add a local command or a remote URL; its tools "
              "appear automatically and always ask before running."_s));
    EXPECT_TRUE(shows(u"Example command: npx -y @modelcontextprotocol/server-filesystem ~/Documents"_s));
    EXPECT_EQ(named<QPushButton>(u"Reconnect all tool servers"_s)->text(), u"Reconnect");
    EXPECT_EQ(named<QPushButton>(u"Add a tool server"_s)->text(), u"Add Server");
}

TEST_F(ToolServerViewsTest, TheHeaderTakesNoMoreRoomThanItNeedsInLargeType)
{
    setTextSize(20);
    open();
    view->resize(760, 720);
    showServers();
    const auto *title = named<QLabel>(u"Tool Servers"_s);
    EXPECT_LE(title->height(), 2 * title->fontMetrics().height()) << title->heightForWidth(title->width());
}

TEST_F(ToolServerViewsTest, ARowIsOneElementWithNameStatusAndSwitch)
{
    toolServerList.add(u"My Files"_s, 2);
    showServers();
    ASSERT_EQ(rows().size(), 1);
    ASSERT_TRUE(reads(rows()[0], u"My Files, Connected via command · 2 tools"_s));
    QAccessibleInterface *element = QAccessible::queryAccessibleInterface(switchOf(rows()[0]));
    EXPECT_EQ(element->role(), QAccessible::CheckBox);
    EXPECT_TRUE(element->state().checked);
    // Beside it the row has nothing to say, but for its buttons.
    QAccessibleInterface *row = QAccessible::queryAccessibleInterface(rows()[0]);
    for (int child = 0; child < row->childCount(); ++child) {
        QAccessibleInterface *part = row->child(child);
        if (part->role() == QAccessible::CheckBox || part->role() == QAccessible::Button)
            continue;
        EXPECT_TRUE(part->text(QAccessible::Name).isEmpty());
    }
    EXPECT_FALSE(shows(u"No tool servers yet."_s));
}

TEST_F(ToolServerViewsTest, ARowShowsTheCommandWithItsArgumentsOrTheAddress)
{
    toolServerList.add(u"Local"_s);
    toolServerList.servers[u"Far"_s].answer = FakeToolServer::listing({});
    manager().appendServer(
        {newUuid(), u"Far"_s, u"http"_s, u"unused"_s, {}, u"https://example.com/mcp"_s, true});
    showServers();
    ASSERT_EQ(rows().size(), 2);
    EXPECT_TRUE(showsQuietly(rows()[0], u"npx -y @modelcontextprotocol/server-filesystem ~/Documents"_s));
    EXPECT_TRUE(showsQuietly(rows()[1], u"https://example.com/mcp"_s));
    EXPECT_TRUE(reads(rows()[1], u"Far, Connected via remote server · 0 tools"_s));
}

TEST_F(ToolServerViewsTest, SuccessTroubleAndTheRestHaveTheirColours)
{
    toolServerList.add(u"Fine"_s);
    toolServerList.add(u"Bad"_s, 0, u"No such file or directory"_s);
    manager().toggleServer(toolServerList.add(u"Still"_s).id, false);
    showServers();
    ASSERT_TRUE(reads(rows()[2], u"Still, Off"_s));
    EXPECT_TRUE(isDrawnIn(rows()[0], &ThemeColors::success));
    EXPECT_TRUE(isDrawnIn(rows()[1], &ThemeColors::warning));
    EXPECT_FALSE(isDrawnIn(rows()[2], &ThemeColors::success));
    EXPECT_FALSE(isDrawnIn(rows()[2], &ThemeColors::warning));
}

TEST_F(ToolServerViewsTest, TheServersAreLookedAfterWhenTheScreenAppears)
{
    toolServerList.add(u"S"_s);
    settle();
    EXPECT_EQ(toolServerList.servers[u"S"_s].starts, 0) << "another tab is in front";
    showServers();
    EXPECT_TRUE(waitUntil([this] { return toolServerList.servers[u"S"_s].starts == 1; }));
}

TEST_F(ToolServerViewsTest, ReconnectRefreshesAll)
{
    toolServerList.add(u"S"_s);
    showServers();
    ASSERT_TRUE(reads(rows()[0], u"S, Connected via command · 1 tool"_s));
    named<QPushButton>(u"Reconnect all tool servers"_s)->click();
    EXPECT_TRUE(waitUntil([this] { return toolServerList.servers[u"S"_s].starts == 2; }));
}

TEST_F(ToolServerViewsTest, TogglingOffShowsOffAfterTheRefreshAndOnConnectsAgain)
{
    toolServerList.add(u"S"_s);
    showServers();
    ASSERT_TRUE(reads(rows()[0], u"S, Connected via command · 1 tool"_s));
    switchOf(rows()[0])->click();
    EXPECT_FALSE(manager().servers()[0].enabled);
    EXPECT_TRUE(reads(rows()[0], u"S, Off"_s));
    EXPECT_FALSE(QAccessible::queryAccessibleInterface(switchOf(rows()[0]))->state().checked);
    QAccessible::queryAccessibleInterface(switchOf(rows()[0]))
        ->actionInterface()
        ->doAction(QAccessibleActionInterface::toggleAction());
    EXPECT_TRUE(reads(rows()[0], u"S, Connected via command · 1 tool"_s));
}

TEST_F(ToolServerViewsTest, AServerThatIsSwitchedElsewhereShowsSo)
{
    toolServerList.add(u"S"_s);
    toolServerList.add(u"T"_s);
    showServers();
    ASSERT_TRUE(reads(rows()[1], u"T, Connected via command · 1 tool"_s));
    manager().toggleServer(manager().servers()[1].id, false);
    EXPECT_TRUE(switchOf(rows()[0])->isChecked());
    EXPECT_FALSE(switchOf(rows()[1])->isChecked());
    manager().toggleServer(manager().servers()[1].id, true);
    EXPECT_TRUE(switchOf(rows()[1])->isChecked());
}

TEST_F(ToolServerViewsTest, TroubleShowsInTheRowAndInTheTabAndItsTextCanBeCopied)
{
    const auto iconKey = [this] { return tabs()->tabIcon(2).pixmap(16).toImage(); };
    const QImage quiet = iconKey();
    toolServerList.add(u"S"_s, 0, u"No such file or directory"_s);
    showServers();
    const QString status = u"Could not connect: No such file or directory"_s;
    ASSERT_TRUE(reads(rows()[0], u"S, "_s + status));
    EXPECT_NE(iconKey(), quiet);
    EXPECT_EQ(tabs()->tabBar()->accessibleTabName(2), u"Tool Servers, a server could not be connected");
    named<QPushButton>(u"Copy the error of the S server"_s)->click();
    EXPECT_EQ(QApplication::clipboard()->text(), status);
    toolServerList.servers[u"S"_s].startFailure.clear();
    named<QPushButton>(u"Reconnect all tool servers"_s)->click();
    ASSERT_TRUE(reads(rows()[0], u"S, Connected via command · 0 tools"_s));
    EXPECT_EQ(iconKey(), quiet);
    EXPECT_EQ(named<QPushButton>(u"Copy the error of the S server"_s), nullptr);
}

TEST_F(ToolServerViewsTest, RemovingTakesTheRowAndGivesTheFocusToTheNextButton)
{
    for (const auto &name : {u"A"_s, u"B"_s})
        toolServerList.add(name);
    showServers();
    auto *remove = named<QPushButton>(u"Remove the A server"_s);
    remove->setFocus();
    remove->click();
    settle();
    ASSERT_EQ(rows().size(), 1);
    EXPECT_EQ(view->focusWidget(), named<QPushButton>(u"Remove the B server"_s));
    named<QPushButton>(u"Remove the B server"_s)->click();
    settle();
    EXPECT_TRUE(rows().isEmpty());
    EXPECT_TRUE(shows(u"No tool servers yet."_s));
    EXPECT_EQ(view->focusWidget(), named<QPushButton>(u"Add a tool server"_s));
}

TEST_F(ToolServerViewsTest, WhatBecomesOfAServerThatIsSwitchedOnOrReconnectedIsHeard)
{
    toolServerList.add(u"S"_s);
    toolServerList.add(u"T"_s, 0, u"No such file or directory"_s);
    announcer.spoken.clear();
    showServers();
    ASSERT_TRUE(reads(rows()[0], u"S, Connected via command · 1 tool"_s));
    ASSERT_TRUE(reads(rows()[1], u"T, Could not connect: No such file or directory"_s));
    EXPECT_EQ(announcer.spoken, QStringList()) << "nobody has asked for it";
    switchOf(rows()[0])->click();
    ASSERT_TRUE(reads(rows()[0], u"S, Off"_s));
    settle();
    EXPECT_EQ(announcer.spoken, QStringList()) << "the switch itself says so";
    switchOf(rows()[0])->click();
    ASSERT_TRUE(reads(rows()[0], u"S, Connected via command · 1 tool"_s));
    settle();
    QStringList heard{u"S, Connected via command · 1 tool"_s};
    EXPECT_EQ(announcer.spoken, heard);
    named<QPushButton>(u"Reconnect all tool servers"_s)->click();
    heard += {u"S, Connected via command · 1 tool"_s, u"T, Could not connect: No such file or directory"_s};
    EXPECT_TRUE(waitUntil([&] { return announcer.spoken == heard; }));
}

TEST_F(ToolServerViewsTest, AnErrorIsReadToItsEndAndInItsOrderWhateverItHolds)
{
    const QString reason = QString(u"first"_s) + QChar(u'\0') + u"second\u202Ethird\u2066\u001B[2J"_s;
    toolServerList.add(u"S"_s, 0, reason);
    showServers();
    const QString status = u"Could not connect: first\uFFFDsecond\uFFFDthird\uFFFD\uFFFD[2J"_s;
    ASSERT_TRUE(reads(rows()[0], u"S, "_s + status));
    const auto texts = rows()[0]->findChildren<QuietText *>();
    EXPECT_TRUE(std::any_of(texts.begin(), texts.end(),
                            [&status](const QuietText *text) { return text->text() == status; }));
    named<QPushButton>(u"Copy the error of the S server"_s)->click();
    EXPECT_EQ(QApplication::clipboard()->text(), u"Could not connect: "_s + reason) << "as it came";
}

TEST_F(ToolServerViewsTest, AnErrorOfThousandsOfLettersIsShownAndCopiedWhole)
{
    const QString reason = QString(u"one reason "_s).repeated(350) + u"and the last"_s;
    toolServerList.add(u"S"_s, 0, reason);
    view->resize(420, 600);
    showServers();
    const QString status = u"Could not connect: "_s + reason;
    ASSERT_TRUE(reads(rows()[0], u"S, "_s + status));
    const auto texts = rows()[0]->findChildren<QuietText *>();
    EXPECT_TRUE(std::any_of(texts.begin(), texts.end(), [&status](const QuietText *text) {
        return text->text() == status && !text->isElided();
    }));
    named<QPushButton>(u"Copy the error of the S server"_s)->click();
    EXPECT_EQ(QApplication::clipboard()->text(), status);
}

TEST_F(ToolServerViewsTest, InANarrowWindowWithALargeFontTheButtonsGoBelow)
{
    toolServerList.add(u"Fine"_s);
    toolServerList.add(u"Bad"_s, 0, u"No such file or directory"_s);
    view->resize(420, 900);
    QFont font = view->font();
    font.setPointSizeF(2 * font.pointSizeF());
    view->setFont(font);
    showServers();
    ASSERT_TRUE(waitUntil([this] { return manager().hasTrouble(); }));
    settle();
    const auto *scroll = view->findChild<MCPServersView *>()->findChild<QScrollArea *>();
    EXPECT_LE(scroll->widget()->width(), scroll->viewport()->width());
    for (const auto &name : {u"Add a tool server"_s, u"Reconnect all tool servers"_s,
                             u"Remove the Bad server"_s, u"Copy the error of the Bad server"_s}) {
        const auto *button = named<QPushButton>(name);
        const QRect place(button->mapTo(scroll->widget(), QPoint()), button->size());
        EXPECT_TRUE(scroll->widget()->rect().contains(place)) << qPrintable(name);
        EXPECT_GE(button->width(), button->sizeHint().width()) << qPrintable(name);
    }
}

TEST_F(ToolServerViewsTest, ReturnPressesTheButtonThatHasTheFocus)
{
    toolServerList.add(u"S"_s);
    showServers();
    ASSERT_TRUE(reads(rows()[0], u"S, Connected via command · 1 tool"_s));
    const auto press = [this](const QString &name, Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        auto *button = named<QPushButton>(name);
        button->setFocus();
        QTest::keyClick(button, key, modifiers);
        settle();
    };
    press(u"Add a tool server"_s, Qt::Key_Return, Qt::ControlModifier);
    EXPECT_EQ(named<QLineEdit>(u"Server name"_s), nullptr);
    press(u"Add a tool server"_s, Qt::Key_Return);
    ASSERT_NE(named<QLineEdit>(u"Server name"_s), nullptr);
    QTest::keyClick(view->focusWidget(), Qt::Key_Escape);
    press(u"Reconnect all tool servers"_s, Qt::Key_Enter, Qt::KeypadModifier);
    EXPECT_TRUE(waitUntil([this] { return toolServerList.servers[u"S"_s].starts == 2; }));
    press(u"Remove the S server"_s, Qt::Key_Return);
    EXPECT_TRUE(rows().isEmpty());
    tabs()->setCurrentIndex(0);
    settle();
    auto *show = named<QPushButton>(u"Show API key"_s);
    ASSERT_NE(show, nullptr);
    press(u"Show API key"_s, Qt::Key_Return);
    EXPECT_NE(named<QPushButton>(u"Hide API key"_s), nullptr) << "the buttons of all tabs are alike";
}

TEST_F(ToolServerViewsTest, ReturnOnTheSwitchOfARowDoesNothing)
{
    toolServerList.add(u"S"_s);
    showServers();
    switchOf(rows()[0])->setFocus();
    QTest::keyClick(switchOf(rows()[0]), Qt::Key_Return);
    EXPECT_TRUE(manager().servers()[0].enabled);
}

TEST_F(ToolServerViewsTest, AWindowThatIsNoLongerMinimisedAsksNobodyAnew)
{
    toolServerList.add(u"S"_s);
    showServers();
    ASSERT_TRUE(reads(rows()[0], u"S, Connected via command · 1 tool"_s));
    const auto enter = [this](Qt::WindowState state) {
        QWindow *window = view->windowHandle();
        QWindowStateChangeEvent change(window->windowStates());
        window->setWindowState(state);
        QCoreApplication::sendEvent(window, &change);
        settle();
    };
    auto *servers = view->findChild<MCPServersView *>();
    QSignalSpy refreshes(&manager(), &MCPManager::statusTextChanged);
    enter(Qt::WindowMinimized);
    ASSERT_FALSE(servers->isVisible() && !view->isMinimized());
    enter(Qt::WindowNoState);
    ASSERT_TRUE(servers->isVisible());
    EXPECT_EQ(refreshes.count(), 0);
    EXPECT_EQ(toolServerList.servers[u"S"_s].starts, 1);
    tabs()->setCurrentIndex(0);
    tabs()->setCurrentIndex(2);
    EXPECT_TRUE(waitUntil([this] { return toolServerList.servers[u"S"_s].starts == 2; }))
        << "it has come anew";
}

TEST_F(ToolServerViewsTest, FiftyServersScrollAndLongTextsWrap)
{
    for (int i = 0; i < 50; ++i)
        toolServerList.add(u"Server %1"_s.arg(i));
    toolServerList.add(QString(300, u'W'), 0, QString(3'000, u'x'));
    view->resize(420, 600);
    showServers();
    ASSERT_TRUE(waitUntil([this] { return manager().hasTrouble(); }));
    settle();
    ASSERT_EQ(rows().size(), 51);
    auto *scroll = view->findChild<MCPServersView *>()->findChild<QScrollArea *>();
    EXPECT_GT(scroll->verticalScrollBar()->maximum(), 0);
    EXPECT_LE(scroll->widget()->width(), scroll->viewport()->width());
    auto *last = named<QPushButton>(u"Remove the Server 49 server"_s);
    last->setFocus();
    scroll->ensureWidgetVisible(last);
    EXPECT_FALSE(last->visibleRegion().isEmpty());
}

} // namespace
} // namespace morvane
