#include "DesktopFixture.h"

#include "platform/linux/desktop/ActionCarrier.h"

#include <QDBusServer>
#include <QDBusVirtualObject>
#include <QFile>
#include <future>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// Dialogs that a program waits for in the middle of what it was told to do.
class DialogsTest : public DesktopFixture {
protected:
    DialogsTest() : DesktopFixture(desktopWithoutText()) {}

    /// A window with the widget that `widget` makes; `ask` runs a dialog, and says what came of it.
    TestProgram &startAsking(const QString &widget)
    {
        return startWindow(u"def ask(*_):\n"
                           "    dialog = Gtk.Dialog(title='Question', transient_for=window)\n"
                           "    dialog.add_button('Yes', 1)\n"
                           "    dialog.add_button('Further', 2)\n"
                           "    field = Gtk.Entry()\n"
                           "    dialog.get_content_area().add(field)\n"
                           "    dialog.show_all()\n"
                           "    answer = dialog.run()\n"
                           "    print('answered', answer, field.get_text(), flush=True)\n"
                           "    dialog.destroy()\n"
                           "    if answer == 2: ask()\n"_s +
                           widget);
    }

    /// By its number in a capture of this moment.
    QString click(const QString &summary)
    {
        return run(m_tools.axClick(numberOf(captureWith(summary), summary)));
    }

    static bool hasSaid(const TestProgram &program, const QString &line)
    {
        return waitUntil([&] { return program.log().contains(line + u'\n'); });
    }
};

TEST_F(DialogsTest, ADialogThatAButtonRunsIsListedClickedAndTypedInto)
{
    const TestProgram &program = startAsking(u"widget = Gtk.Button(label='Open')\n"
                                             "widget.connect('clicked', ask)"_s);
    EXPECT_TRUE(click(u"button 'Open'"_s).startsWith(u"Pressed button 'Open' at"_s));
    const QString text =
        captureWith({u"(frontmost window: \"Question\")"_s, u"button 'Yes'"_s, u"text field"_s});
    EXPECT_EQ(run(m_tools.axType(numberOf(text, u"text field"_s), u"amber"_s)),
              u"Set the contents of text field to \"amber\"."_s);
    const QPoint field = placeOf(text, u"text field"_s).value_or(QPoint());
    EXPECT_TRUE(run(m_tools.clickAt(field)).endsWith(u" on text field 'amber'."_s));
    run(m_tools.pressKey(u"end"_s));
    EXPECT_EQ(run(m_tools.typeText(u" Łódź"_s)), u"Typed 5 characters."_s);
    EXPECT_TRUE(click(u"button 'Yes'"_s).startsWith(u"Pressed button 'Yes' at"_s));
    EXPECT_TRUE(hasSaid(program, u"answered 1 amber Łódź"_s)) << program.log().toStdString();
    captureWith({u"(frontmost window: \"Before\")"_s, u"button 'Open'"_s});
}

TEST_F(DialogsTest, ADialogThatADialogRunsIsAnsweredToo)
{
    const TestProgram &program = startAsking(u"widget = Gtk.Button(label='Open')\n"
                                             "widget.connect('clicked', ask)"_s);
    click(u"button 'Open'"_s);
    EXPECT_TRUE(click(u"button 'Further'"_s).startsWith(u"Pressed"_s));
    EXPECT_TRUE(hasSaid(program, u"answered 2 "_s)) << program.log().toStdString();
    EXPECT_TRUE(click(u"button 'Yes'"_s).startsWith(u"Pressed"_s));
    EXPECT_TRUE(hasSaid(program, u"answered 1 "_s)) << program.log().toStdString();
    // And once more, when all of it is over.
    EXPECT_TRUE(click(u"button 'Open'"_s).startsWith(u"Pressed"_s));
    captureWith(u"button 'Yes'"_s);
}

TEST_F(DialogsTest, ADialogThatAChangedFieldRunsIsAnswered)
{
    const TestProgram &program = startAsking(u"widget = Gtk.Entry()\n"
                                             "widget.connect('changed', ask)"_s);
    const int field = numberOf(captureWith(u"text field"_s), u"text field"_s);
    EXPECT_EQ(run(m_tools.axType(field, u"amber"_s)), u"Set the contents of text field to \"amber\"."_s);
    EXPECT_TRUE(click(u"button 'Yes'"_s).startsWith(u"Pressed"_s));
    EXPECT_TRUE(hasSaid(program, u"answered 1 "_s)) << program.log().toStdString();
    captureWith(u"text field 'amber'"_s);
}

TEST_F(DialogsTest, ADialogThatAnItemOfAMenuRunsIsAnswered)
{
    const TestProgram &program = startAsking(u"widget = Gtk.Box(orientation=Gtk.Orientation.VERTICAL)\n"
                                             "bar = Gtk.MenuBar()\n"
                                             "top = Gtk.MenuItem(label='Actions')\n"
                                             "menu = Gtk.Menu()\n"
                                             "item = Gtk.MenuItem(label='Ask me')\n"
                                             "item.connect('activate', ask)\n"
                                             "menu.append(item)\n"
                                             "top.set_submenu(menu)\n"
                                             "bar.append(top)\n"
                                             "widget.add(bar)"_s);
    EXPECT_TRUE(click(u"menu item 'Actions'"_s).startsWith(u"Pressed"_s));
    EXPECT_TRUE(click(u"menu item 'Ask me'"_s).startsWith(u"Pressed"_s));
    EXPECT_TRUE(click(u"button 'Yes'"_s).startsWith(u"Pressed"_s));
    EXPECT_TRUE(hasSaid(program, u"answered 1 "_s)) << program.log().toStdString();
    // By the mouse as well.
    click(u"menu item 'Actions'"_s);
    const QPoint item =
        placeOf(captureWith(u"menu item 'Ask me'"_s), u"menu item 'Ask me'"_s).value_or(QPoint());
    const QString clicked = run(m_tools.clickAt(item));
    EXPECT_TRUE(clicked.endsWith(u")."_s))
        << "what lies behind the menu was not hit: " << clicked.toStdString();
    captureWith(u"button 'Yes'"_s);
}

TEST_F(DialogsTest, ADialogIsAnsweredByTheUserWhenWhatPressedTheButtonThatOpenedItHasEnded)
{
    const TestProgram &program = startAsking(u"widget = Gtk.Button(label='Open')\n"
                                             "widget.connect('clicked', ask)"_s);
    auto ending = std::make_unique<ScreenTools>(desktopWithoutText());
    const auto numberIn = [&](const QString &summary) {
        QString text;
        EXPECT_TRUE(waitUntil([&] {
            text = run(ending->captureScreen());
            return text.contains(summary);
        })) << text.toStdString();
        return numberOf(text, summary);
    };
    EXPECT_TRUE(run(ending->axClick(numberIn(u"button 'Open'"_s))).startsWith(u"Pressed"_s));
    EXPECT_TRUE(run(ending->axType(numberIn(u"text field"_s), u"amber"_s)).startsWith(u"Set the contents"_s));
    ending.reset();
    run(m_tools.pressKey(u"end"_s));
    EXPECT_EQ(run(m_tools.typeText(u" lantern"_s)), u"Typed 8 characters."_s);
    EXPECT_TRUE(click(u"button 'Yes'"_s).startsWith(u"Pressed"_s));
    EXPECT_TRUE(hasSaid(program, u"answered 1 amber lantern"_s)) << program.log().toStdString();
}

TEST_F(DialogsTest, ADialogOfQtThatAButtonRunsIsReadAndLeft)
{
    start(u"featherpad"_s, {u"--standalone"_s});
    EXPECT_TRUE(click(u"button 'Open'"_s).startsWith(u"Pressed button 'Open' at"_s));
    EXPECT_TRUE(click(u"button 'Cancel'"_s).startsWith(u"Pressed button 'Cancel' at"_s));
    EXPECT_TRUE(waitUntil([&] { return !capture().contains(u"button 'Cancel'"_s); }));
}

/// A program that tells of a line to its elements.
class LineAddressTest : public testing::Test {
protected:
    LineAddressTest()
    {
        QDBusConnection bus = QDBusConnection::connectToBus(busAddress(), u"telling"_s);
        EXPECT_TRUE(bus.registerVirtualObject(u"/org/a11y/atspi/accessible/root"_s, &m_root));
        m_service = bus.baseService();
    }
    ~LineAddressTest() override { QDBusConnection::disconnectFromBus(u"telling"_s); }

    /// Whether there is a line to the process `pid` that says it is at `address`.
    bool opens(const QString &address, qint64 pid)
    {
        m_root.address = address;
        std::future<bool> opened = std::async(std::launch::async, [this, pid] {
            AccessibilityConnection own;
            return !lineAddress(own, m_service, pid, QDeadlineTimer(std::chrono::seconds(20))).isEmpty();
        });
        EXPECT_TRUE(
            waitUntil([&] { return opened.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }));
        return opened.get();
    }

    const QTemporaryDir m_folder;

private:
    class Root final : public QDBusVirtualObject {
    public:
        QString introspect(const QString &) const override { return {}; }
        bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
        {
            return connection.send(message.createReply(address));
        }

        QString address;
    };

    static QString busAddress()
    {
        const QDBusMessage question = QDBusMessage::createMethodCall(u"org.a11y.Bus"_s, u"/org/a11y/bus"_s,
                                                                     u"org.a11y.Bus"_s, u"GetAddress"_s);
        return QDBusConnection::sessionBus().call(question).arguments().value(0).toString();
    }

    Root m_root;
    QString m_service;
};

TEST_F(LineAddressTest, ALineIsTakenToTheProgramThatIsMeantAndToNoOther)
{
    const qint64 own = QCoreApplication::applicationPid();
    const QString place = u"unix:path="_s + m_folder.filePath(u"line"_s);
    EXPECT_FALSE(opens(place, own)) << "nobody listens there";
    const QDBusServer server(place);
    ASSERT_TRUE(server.isConnected()) << server.lastError().message().toStdString();
    EXPECT_TRUE(opens(server.address(), own));
    EXPECT_FALSE(opens(server.address(), own + 1)) << "a path from within a sandbox";
    EXPECT_FALSE(opens(server.address(), 0));
    EXPECT_FALSE(opens(server.address() + u";"_s + server.address(), own));
    EXPECT_FALSE(opens(u"unix:path="_s + QString(200, u'x'), own)) << "longer than a place can be";
    EXPECT_FALSE(opens({}, own));
}

TEST_F(LineAddressTest, AnAddressThatWouldStartAProgramStartsNone)
{
    const QString trace = m_folder.filePath(u"trace"_s);
    EXPECT_FALSE(opens(u"unixexec:path=/usr/bin/touch,argv1="_s + trace, QCoreApplication::applicationPid()));
    EXPECT_FALSE(QFile::exists(trace));
}

} // namespace
} // namespace morvane
