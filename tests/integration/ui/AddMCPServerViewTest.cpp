#include "ToolServerViewsFixture.h"

#include "ui/settings/AddMCPServerView.h"
#include "ui/sheets/SheetCard.h"

#include <QFile>
#include <QScrollArea>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class AddMCPServerViewTest : public ToolServerViewsFixture {
protected:
    AddMCPServerView *openForm()
    {
        auto *add = named<QPushButton>(u"Add a tool server"_s);
        add->setFocus();
        add->click();
        settle();
        return view->findChild<AddMCPServerView *>();
    }
    QPushButton *saveButton() const { return named<QPushButton>(u"Add Server"_s); }
};

TEST_F(AddMCPServerViewTest, TheFormAddsALocalServerByKeyboardAlone)
{
    showServers();
    openForm();
    EXPECT_TRUE(shows(u"Add Tool Server"_s));
    EXPECT_TRUE(shows(u"The command runs on this Mac every time Morvane starts."_s));
    EXPECT_EQ(view->focusWidget(), named<QLineEdit>(u"Server name"_s));
    EXPECT_FALSE(saveButton()->isEnabled());
    EXPECT_EQ(saveButton()->accessibleDescription(), u"Save the tool server");
    QStringList choices;
    for (const auto *choice : named<SegmentedPicker>(u"Transport"_s)->findChildren<QAbstractButton *>())
        choices.append(choice->text());
    EXPECT_EQ(choices, (QStringList{u"Local Command"_s, u"Remote URL"_s}));
    EXPECT_EQ(named<QLineEdit>(u"Server name"_s)->placeholderText(), u"Name (for example: My Files)");
    EXPECT_EQ(named<QLineEdit>(u"Command"_s)->placeholderText(),
              u"Command (for example: npx -y @modelcontextprotocol/server-filesystem)");
    EXPECT_EQ(named<QLineEdit>(u"Arguments"_s)->placeholderText(),
              u"Arguments, separated by spaces (for example: ~/Documents)");
    QTest::keyClicks(view->focusWidget(), u" My Files "_s);
    QTest::keyClick(view->focusWidget(), Qt::Key_Tab); // to the transport
    QTest::keyClick(view->focusWidget(), Qt::Key_Tab);
    EXPECT_EQ(view->focusWidget(), named<QLineEdit>(u"Command"_s));
    QTest::keyClicks(view->focusWidget(), u"run it"_s);
    EXPECT_TRUE(saveButton()->isEnabled());
    QTest::keyClick(view->focusWidget(), Qt::Key_Tab);
    QTest::keyClicks(view->focusWidget(), u"a  b"_s);
    QTest::keyClick(view->focusWidget(), Qt::Key_Return);
    settle();
    ASSERT_EQ(manager().servers().size(), 1);
    const MCPServerConfig &server = manager().servers()[0];
    EXPECT_EQ(server.name, u"My Files");
    EXPECT_EQ(server.command, u"run it");
    EXPECT_EQ(server.args, (QStringList{u"a"_s, u"b"_s}));
    EXPECT_TRUE(waitUntil([this] {
        QFile file(home.path(u"tool-servers/mcp-servers.json"_s));
        return file.open(QIODevice::ReadOnly) && file.readAll().contains("My Files");
    })) << "it is saved";
    EXPECT_EQ(rows().size(), 1);
    EXPECT_EQ(named<QLineEdit>(u"Server name"_s), nullptr) << "the form is closed";
    EXPECT_EQ(view->focusWidget(), named<QPushButton>(u"Add a tool server"_s));
}

TEST_F(AddMCPServerViewTest, TheFormAddsARemoteServerByKeyboardAlone)
{
    showServers();
    openForm();
    retype(named<QLineEdit>(u"Server name"_s), u"Far"_s);
    QTest::keyClick(view->focusWidget(), Qt::Key_Tab);
    QTest::keyClick(view->focusWidget(), Qt::Key_Right);
    QTest::keyClick(view->focusWidget(), Qt::Key_Space);
    settle();
    EXPECT_TRUE(shows(u"The endpoint must speak the MCP HTTP transport."_s));
    EXPECT_EQ(named<QLineEdit>(u"Command"_s), nullptr);
    EXPECT_TRUE(named<QLineEdit>(u"Server URL"_s)->placeholderText().startsWith(u"https://"_s));
    EXPECT_TRUE(named<QLineEdit>(u"Server URL"_s)->placeholderText().endsWith(u"/mcp"_s));
    QTest::keyClick(view->focusWidget(), Qt::Key_Tab);
    ASSERT_EQ(view->focusWidget(), named<QLineEdit>(u"Server URL"_s));
    retype(named<QLineEdit>(u"Server URL"_s), u"HTTP://x"_s);
    EXPECT_FALSE(saveButton()->isEnabled());
    retype(named<QLineEdit>(u"Server URL"_s), u"http://127.0.0.1:1/mcp"_s);
    ASSERT_TRUE(saveButton()->isEnabled());
    QTest::keyClick(view->focusWidget(), Qt::Key_Tab); // to Cancel
    QTest::keyClick(view->focusWidget(), Qt::Key_Tab);
    EXPECT_EQ(view->focusWidget(), saveButton());
    QTest::keyClick(view->focusWidget(), Qt::Key_Space);
    settle();
    ASSERT_EQ(manager().servers().size(), 1);
    EXPECT_EQ(manager().servers()[0].transport, u"http");
    EXPECT_EQ(manager().servers()[0].url, u"http://127.0.0.1:1/mcp");
}

TEST_F(AddMCPServerViewTest, ANameOfBlanksKeepsTheButtonDisabledAndEscapeAddsNothing)
{
    showServers();
    openForm();
    retype(named<QLineEdit>(u"Server name"_s), u"   "_s);
    retype(named<QLineEdit>(u"Command"_s), u"run"_s);
    EXPECT_FALSE(saveButton()->isEnabled());
    QTest::keyClick(view->focusWidget(), Qt::Key_Return);
    EXPECT_TRUE(manager().servers().isEmpty());
    QTest::keyClick(view->focusWidget(), Qt::Key_Escape);
    EXPECT_EQ(named<QLineEdit>(u"Server name"_s), nullptr);
    EXPECT_TRUE(view->isVisible()) << "Escape has closed the form, not the window";
    openForm();
    EXPECT_EQ(named<QLineEdit>(u"Server name"_s)->text(), QString()) << "it begins anew";
}

TEST_F(AddMCPServerViewTest, AddingDoesNotWaitForTheConnection)
{
    toolServerList.servers[u"Slow"_s].answer = {};
    showServers();
    openForm();
    retype(named<QLineEdit>(u"Server name"_s), u"Slow"_s);
    retype(named<QLineEdit>(u"Command"_s), u"run"_s);
    saveButton()->click();
    settle();
    ASSERT_EQ(rows().size(), 1);
    EXPECT_TRUE(reads(rows()[0], u"Slow, Connecting…"_s));
    clock.advance(std::chrono::seconds(20));
    EXPECT_TRUE(reads(rows()[0], u"Slow, Could not connect: The MCP server did not respond in time."_s));
}

TEST_F(AddMCPServerViewTest, WhatBecomesOfAnAddedServerIsHeardOnce)
{
    toolServerList.servers[u"Slow"_s].answer = {};
    showServers();
    openForm();
    retype(named<QLineEdit>(u"Server name"_s), u"Slow"_s);
    retype(named<QLineEdit>(u"Command"_s), u"run"_s);
    announcer.spoken.clear();
    saveButton()->click();
    settle();
    EXPECT_EQ(announcer.spoken, QStringList()) << "nothing has become of it yet";
    clock.advance(std::chrono::seconds(20));
    const QStringList heard{u"Slow, Could not connect: The MCP server did not respond in time."_s};
    EXPECT_TRUE(waitUntil([&] { return announcer.spoken == heard; }));
    named<QPushButton>(u"Remove the Slow server"_s)->click();
    settle();
    EXPECT_EQ(announcer.spoken, heard);
}

TEST_F(AddMCPServerViewTest, TheFormIsReachedWholeInATinyWindowWithALargeFont)
{
    setTextSize(26);
    view->resize(320, 300);
    showServers();
    auto *card = openForm()->card();
    auto *scroll = card->findChild<QScrollArea *>();
    const QSize content = scroll->widget()->size();
    EXPECT_GT(content.height(), scroll->viewport()->height());
    EXPECT_EQ(content.width(), scroll->viewport()->width()) << "it scrolls one way only";
    const auto isInView = [scroll](const QWidget *part) {
        return scroll->viewport()->rect().contains(
            QRect(part->mapTo(scroll->viewport(), QPoint()), part->size()));
    };
    const auto canBeSeenWhole = [&](const QWidget *part) {
        const QRect place(part->mapTo(scroll->widget(), QPoint()), part->size());
        return scroll->widget()->rect().contains(place) && part->height() <= scroll->viewport()->height();
    };
    for (const QWidget *part : std::initializer_list<QWidget *>{
             named<QLineEdit>(u"Server name"_s), named<QLineEdit>(u"Command"_s),
             named<QLineEdit>(u"Arguments"_s), named<SegmentedPicker>(u"Transport"_s),
             named<QPushButton>(u"Cancel"_s), saveButton()}) {
        ASSERT_NE(part, nullptr);
        EXPECT_TRUE(canBeSeenWhole(part)) << qPrintable(part->accessibleName());
    }
    EXPECT_GT(scroll->viewport()->height(), card->height() / 2) << "the content has most of the room";
    EXPECT_TRUE(isInView(named<QLineEdit>(u"Server name"_s))) << "where the form begins";
    // The keyboard brings each of them into view, in the order in which they stand.
    retype(named<QLineEdit>(u"Server name"_s), u"Mine"_s);
    retype(named<QLineEdit>(u"Command"_s), u"run"_s);
    named<QLineEdit>(u"Arguments"_s)->setFocus();
    for (const auto &name : {u"Cancel"_s, u"Add Server"_s}) {
        QTest::keyClick(view->focusWidget(), Qt::Key_Tab);
        ASSERT_EQ(view->focusWidget(), named<QPushButton>(name));
        EXPECT_TRUE(isInView(view->focusWidget())) << qPrintable(name);
    }
    view->resize(700, 760);
    settle();
    EXPECT_EQ(view->focusWidget(), saveButton()) << "which has moved out of what scrolls";
    EXPECT_FALSE(scroll->isAncestorOf(saveButton()));
    QTest::keyClick(view->focusWidget(), Qt::Key_Return);
    EXPECT_EQ(manager().servers().size(), 1);
}

} // namespace
} // namespace morvane
