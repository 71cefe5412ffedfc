#include "platform/linux/desktop/AccessibilityConnection.h"
#include "base/FileDescriptor.h"
#include "platform/linux/desktop/AnsweringBus.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QTemporaryDir>
#include <csignal>
#include <future>
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/un.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace morvane {
namespace {

QString accessibilityBus()
{
    const auto question = QDBusMessage::createMethodCall(u"org.a11y.Bus"_s, u"/org/a11y/bus"_s,
                                                         u"org.a11y.Bus"_s, u"GetAddress"_s);
    return QDBusConnection::sessionBus().call(question).arguments().value(0).toString();
}

/// The process that listens at such an address.
pid_t processOf(const QString &address)
{
    const QByteArray path = address.section(u',', 0, 0).section(u'=', 1).toUtf8();
    const FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un place{};
    place.sun_family = AF_UNIX;
    std::copy(path.begin(), path.end(), place.sun_path);
    EXPECT_EQ(::connect(socket.get(), reinterpret_cast<const sockaddr *>(&place), sizeof place), 0);
    ucred listener{};
    socklen_t size = sizeof listener;
    EXPECT_EQ(::getsockopt(socket.get(), SOL_SOCKET, SO_PEERCRED, &listener, &size), 0);
    return listener.pid;
}

TEST(AccessibilityConnectionTest, ABusThatHangsIsNotWaitedForAndServesOnceItGoesOn)
{
    const QString address = accessibilityBus();
    ASSERT_TRUE(address.startsWith(u"unix:path="_s)) << address.toStdString();
    const pid_t bus = processOf(address);
    const AccessibilityCall names{
        u"org.freedesktop.DBus"_s, u"/"_s, u"org.freedesktop.DBus"_s, u"ListNames"_s, {}};
    AccessibilityConnection connection;
    const auto ask = [&](std::chrono::milliseconds limit) {
        return std::async(std::launch::async, [&connection, names, limit] {
            return connection.ask(names, QDeadlineTimer(limit)).kind;
        });
    };
    ASSERT_EQ(::kill(bus, SIGSTOP), 0);
    auto unanswered = ask(300ms);
    EXPECT_EQ(unanswered.wait_for(20s), std::future_status::ready);
    ASSERT_EQ(::kill(bus, SIGCONT), 0);
    EXPECT_EQ(unanswered.get(), AccessibilityAnswer::Kind::late);
    EXPECT_EQ(ask(20s).get(), AccessibilityAnswer::Kind::answered);
}

TEST(AnsweringBusTest, WhereNobodyListensNobodyAnswers)
{
    const QTemporaryDir folder;
    EXPECT_FALSE(isAnswering(u"unix:path="_s + folder.filePath(u"none"_s), QDeadlineTimer(20s)));
    EXPECT_FALSE(isAnswering(u"unix:abstract="_s + folder.path(), QDeadlineTimer(20s)));
    EXPECT_FALSE(isAnswering(u"unix:path=/"_s + QString(1000, u'x'), QDeadlineTimer(20s)));
}

TEST(AnsweringBusTest, AnAbstractSocketIsFoundByItsName)
{
    const QTemporaryDir folder;
    sockaddr_un place{};
    place.sun_family = AF_UNIX;
    const QByteArray name = '\0' + folder.path().toUtf8();
    std::copy(name.begin(), name.end(), place.sun_path);
    const FileDescriptor listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const auto size = socklen_t(offsetof(sockaddr_un, sun_path) + std::size_t(name.size()));
    ASSERT_EQ(::bind(listener.get(), reinterpret_cast<const sockaddr *>(&place), size), 0);
    ASSERT_EQ(::listen(listener.get(), 1), 0);
    const QString address = u"unix:abstract="_s + folder.path() + u",guid=0"_s;
    EXPECT_FALSE(isAnswering(address, QDeadlineTimer(0)));
    const FileDescriptor asker(::accept(listener.get(), nullptr, nullptr));
    char greeting[64] = {};
    EXPECT_GT(::recv(asker.get(), greeting, sizeof greeting - 1, 0), 0);
    EXPECT_EQ(greeting[0], '\0');
    EXPECT_THAT(greeting + 1, testing::StartsWith("AUTH EXTERNAL "));
}

TEST(AnsweringBusTest, WhatIsNoSocketOfThisComputerIsAssumedToAnswer)
{
    EXPECT_TRUE(isAnswering(u"tcp:host=127.0.0.1,port=1"_s, QDeadlineTimer(0)));
}

} // namespace
} // namespace morvane
