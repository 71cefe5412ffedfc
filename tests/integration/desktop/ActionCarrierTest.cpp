#include "platform/linux/desktop/ActionCarrier.h"

#include "ScriptedCarrier.h"
#include "base/InstalledFiles.h"
#include "support/TestProgram.h"
#include "support/WaitUntil.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusServer>
#include <QDBusVirtualObject>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <future>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

const QString rootPath = u"/org/a11y/atspi/accessible/root"_s;

/// A program on the accessibility bus with a line of its own, on which it does what the test says.
class ActingProgram final : public QDBusVirtualObject {
public:
    using Act = std::function<void(const QDBusMessage &, const QDBusConnection &)>;

    ActingProgram(const QString &name, const QString &place)
        : m_name(name), m_bus(QDBusConnection::connectToBus(busAddress(), name)), m_server(place)
    {
        EXPECT_TRUE(m_bus.registerVirtualObject(rootPath, this));
        QObject::connect(&m_server, &QDBusServer::newConnection, this, [this](QDBusConnection line) {
            EXPECT_TRUE(line.registerVirtualObject(rootPath, this));
        });
    }
    ~ActingProgram() override { QDBusConnection::disconnectFromBus(m_name); }

    QString service() const { return m_bus.baseService(); }

    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
    {
        if (message.member() == "GetApplicationBusAddress"_L1 && onQuestion)
            onQuestion();
        if (message.member() == "GetApplicationBusAddress"_L1)
            return connection.send(message.createReply(lines.isEmpty() ? m_server.address() : lines));
        if (message.member() != "DoAction"_L1)
            return false;
        act(message, connection);
        return true;
    }

    Act act;
    std::function<void()> onQuestion; ///< Called when it is asked where its lines are.
    QString lines;                    ///< Where it says that they are, if elsewhere.

private:
    static QString busAddress()
    {
        const QDBusMessage question = QDBusMessage::createMethodCall(u"org.a11y.Bus"_s, u"/org/a11y/bus"_s,
                                                                     u"org.a11y.Bus"_s, u"GetAddress"_s);
        return QDBusConnection::sessionBus().call(question).arguments().value(0).toString();
    }

    const QString m_name;
    QDBusConnection m_bus;
    QDBusServer m_server;
};

class ActionCarrierTest : public testing::Test {
protected:
    using Kind = AccessibilityAnswer::Kind;

    std::unique_ptr<ActingProgram> newProgram(const QString &name)
    {
        return std::make_unique<ActingProgram>(name, u"unix:path="_s + m_folder.filePath(name));
    }

    /// What comes of telling the program to act.
    static AccessibilityAnswer tell(ActionCarrier &carrier, const ActingProgram &program,
                                    std::chrono::milliseconds limit = std::chrono::seconds(20),
                                    qint64 pid = QCoreApplication::applicationPid())
    {
        return tellUntil({}, carrier, program, limit, pid).value();
    }
    static std::optional<AccessibilityAnswer>
    tellUntil(const std::stop_token &stop, ActionCarrier &carrier, const ActingProgram &program,
              std::chrono::milliseconds limit = std::chrono::seconds(20),
              qint64 pid = QCoreApplication::applicationPid())
    {
        const AccessibilityCall call{
            program.service(), rootPath, u"org.a11y.atspi.Action"_s, u"DoAction"_s, {0}};
        auto told = std::async(std::launch::async, [&carrier, call, limit, pid, stop] {
            return carrier.tell(call, pid, limit, stop);
        });
        EXPECT_TRUE(
            waitUntil([&] { return told.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }));
        return told.get();
    }

    QString script(const QString &commands) const
    {
        return scriptedCarrier(m_folder.filePath(u"script"_s), commands);
    }
    /// A program that writes its number to a file and becomes `program`.
    QString wrapped(const QString &program) const
    {
        return script(u"echo $$ > "_s + m_folder.filePath(u"number"_s) + u"\nexec "_s + program + u'\n');
    }
    QString processFile(const QString &name) const
    {
        QFile number(m_folder.filePath(u"number"_s));
        EXPECT_TRUE(number.open(QIODevice::ReadOnly));
        return u"/proc/%1/"_s.arg(QString::fromUtf8(number.readAll()).trimmed()) + name;
    }

    static qsizetype openDescriptors()
    {
        return QDir(u"/proc/self/fd"_s).entryList(QDir::Files | QDir::System).size();
    }

    const QTemporaryDir m_folder;
    const QString m_helper = InstalledFiles::aroundProgram().helper(u"morvane-action-carrier"_s);
    AccessibilityConnection m_bus;
};

TEST_F(ActionCarrierTest, WhatTheProgramAnswersIsTold)
{
    ActionCarrier carrier(m_bus, m_helper);
    const auto program = newProgram(u"answering"_s);
    for (const bool isDone : {true, false}) {
        program->act = [isDone](const QDBusMessage &message, const QDBusConnection &line) {
            line.send(message.createReply(isDone));
        };
        const AccessibilityAnswer answer = tell(carrier, *program);
        EXPECT_EQ(answer.kind, Kind::answered);
        EXPECT_EQ(answer.values.value(0).toBool(), isDone);
    }
    program->act = [](const QDBusMessage &message, const QDBusConnection &line) {
        line.send(message.createErrorReply(QDBusError::Failed, u"no"_s));
    };
    EXPECT_EQ(tell(carrier, *program).kind, Kind::failed);
}

TEST_F(ActionCarrierTest, AProgramIsNotToldAnyMoreOnceAStopHasComeWhileItToldOfItself)
{
    ActionCarrier carrier(m_bus, m_helper);
    const auto program = newProgram(u"stopped"_s);
    program->act = [](const QDBusMessage &message, const QDBusConnection &line) {
        line.send(message.createReply(true));
    };
    for (const QString &lines : {QString(), u"unix:path=/no/such/place"_s}) {
        program->lines = lines;
        std::stop_source stop;
        EXPECT_TRUE(tellUntil(stop.get_token(), carrier, *program));
        program->onQuestion = [&stop] { stop.request_stop(); };
        EXPECT_FALSE(tellUntil(stop.get_token(), carrier, *program));
        program->onQuestion = nullptr;
    }
}

TEST_F(ActionCarrierTest, AProgramThatGoesBeforeItAnswersHasEnded)
{
    ActionCarrier carrier(m_bus, m_helper);
    const auto program = newProgram(u"quitting"_s);
    program->act = [](const QDBusMessage &, const QDBusConnection &line) {
        QDBusConnection::disconnectFromPeer(line.name());
    };
    EXPECT_EQ(tell(carrier, *program).kind, Kind::ended);
}

TEST_F(ActionCarrierTest, ACarrierThatEndsWithItsProgramBeforeItHasPassedTheAnswerOnTellsThatItHasEnded)
{
    const QString place = m_folder.filePath(u"lines"_s);
    TestProgram listener(u"/usr/bin/python3"_s,
                         {u"-c"_s, u"import signal, socket\n"
                                   "lines = socket.socket(socket.AF_UNIX)\n"
                                   "lines.bind('%1')\n"
                                   "lines.listen()\n"
                                   "print('listens', flush=True)\n"
                                   "signal.pause()\n"_s.arg(place)},
                         QProcessEnvironment::systemEnvironment(), m_folder.filePath(u"log"_s));
    ASSERT_TRUE(waitUntil([&] { return listener.log().contains("listens"_L1); }));
    const auto program = newProgram(u"quitting"_s);
    program->lines = u"unix:path="_s + place;
    ActionCarrier carrier(m_bus, script(u"take\n"
                                        "tell 0 1\n"
                                        "exec /usr/bin/python3 -c '\n"
                                        "import os, select\n"
                                        "program = os.pidfd_open(%1)\n"
                                        "os.kill(%1, 9)\n"
                                        "select.select([program], [], [])'\n"_s.arg(listener.pid())));
    EXPECT_EQ(tell(carrier, *program, std::chrono::seconds(20), listener.pid()).kind, Kind::ended);
}

TEST_F(ActionCarrierTest, AProgramWhoseCarrierCrashesIsLateAndHasNotEnded)
{
    ActionCarrier carrier(m_bus, script(u"take\n"
                                        "tell 0 1\n"
                                        "kill -KILL $$\n"_s));
    EXPECT_EQ(tell(carrier, *newProgram(u"running"_s)).kind, Kind::late);
}

TEST_F(ActionCarrierTest, AProgramThatDoesNotAnswerIsLateAndKeepsItsLineWhenMorvaneHasEnded)
{
    auto carrier = std::make_unique<ActionCarrier>(m_bus, wrapped(m_helper));
    const auto program = newProgram(u"asking"_s);
    QDBusMessage question;
    std::optional<QDBusConnection> line;
    program->act = [&](const QDBusMessage &message, const QDBusConnection &over) {
        question = message;
        line = over;
    };
    EXPECT_EQ(tell(*carrier, *program, std::chrono::milliseconds(100)).kind, Kind::late);
    ASSERT_TRUE(waitUntil([&] { return line.has_value(); }));
    carrier.reset();
    // By then it knows, and would have ended.
    EXPECT_TRUE(waitUntil([&] {
        return !QFile::exists(processFile(u"fd"_s)) ||
               QFile::symLinkTarget(processFile(u"fd/3"_s)) == "/dev/null"_L1;
    }));
    EXPECT_TRUE(line->isConnected());
    EXPECT_TRUE(line->send(question.createReply(true)));
    EXPECT_TRUE(QFile::exists(processFile(u"fd/3"_s)));
}

TEST_F(ActionCarrierTest, TheLateAnswerToAnEarlierRequestIsNoneToTheNext)
{
    ActionCarrier carrier(m_bus, script(u"take\n"
                                        "tell 0 1\n"
                                        "take\n"
                                        "tell 1 1\n"
                                        "tell 0 2\n"
                                        "tell 2 2\n"_s));
    const auto program = newProgram(u"slow"_s);
    EXPECT_EQ(tell(carrier, *program, std::chrono::milliseconds(100)).kind, Kind::late);
    const AccessibilityAnswer second = tell(carrier, *program);
    EXPECT_EQ(second.kind, Kind::answered);
    EXPECT_FALSE(second.values.value(0).toBool());
}

TEST_F(ActionCarrierTest, LinesThatTheProgramReadsAgainAreClosed)
{
    ActionCarrier carrier(m_bus, wrapped(m_helper));
    const auto program = newProgram(u"answering"_s);
    program->act = [](const QDBusMessage &message, const QDBusConnection &line) {
        line.send(message.createReply(true));
    };
    EXPECT_EQ(tell(carrier, *program).kind, Kind::answered);
    const auto open = [this] {
        return QDir(processFile(u"fd"_s)).entryList(QDir::Files | QDir::System).size();
    };
    const qsizetype withOne = open();
    EXPECT_GT(withOne, 0);
    for (int time = 0; time < 5; ++time)
        EXPECT_EQ(tell(carrier, *program).kind, Kind::answered);
    EXPECT_TRUE(waitUntil([&] { return open() <= withOne; })) << open() << " for " << withOne;
}

TEST_F(ActionCarrierTest, WhatCarriedForAProgramThatHasGoneIsForgottenWithTheNext)
{
    const auto one = newProgram(u"one"_s);
    const auto other = newProgram(u"other"_s);
    // Ends at once, as one does whose program has ended.
    ActionCarrier carrier(m_bus, u"/bin/true"_s);
    EXPECT_EQ(tell(carrier, *one).kind, Kind::failed);
    const qsizetype open = openDescriptors();
    EXPECT_EQ(tell(carrier, *other).kind, Kind::failed);
    EXPECT_TRUE(waitUntil([&] { return openDescriptors() <= open; })) << openDescriptors() << " for " << open;
}

} // namespace
} // namespace morvane
