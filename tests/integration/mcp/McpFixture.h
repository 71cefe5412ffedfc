#pragma once

#include "async/SystemClock.h"
#include "base/InstalledFiles.h"
#include "mcp/HttpTransport.h"
#include "mcp/MCPConnection.h"
#include "mcp/StdioThread.h"
#include "mcp/StdioTransport.h"
#include "net/HttpClient.h"
#include "support/RawHttpServer.h"
#include "support/RunTask.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <optional>

namespace morvane {

/// Connections to real servers on real time.
class McpTest : public testing::Test {
protected:
    ~McpTest() override { scheduler.shutdown(std::chrono::seconds(1)); }

    static QString program(const QString &name)
    {
        return QCoreApplication::applicationDirPath() + QLatin1Char('/') + name;
    }
    static QByteArray guard()
    {
        return QFile::encodeName(
            InstalledFiles::aroundProgram().helper(QStringLiteral("morvane-server-guard")));
    }

    /// A connection to a command, not made yet.
    std::shared_ptr<MCPConnection> stdio(const QString &command, const QStringList &args = {})
    {
        return std::make_shared<MCPConnection>([&](const std::shared_ptr<PendingRequests> &requests) {
            return std::make_unique<StdioTransport>(command, args, thread, requests);
        });
    }
    /// The same to our own server, with its options.
    std::shared_ptr<MCPConnection> scripted(const QStringList &options = {})
    {
        return stdio(program(QStringLiteral("scripted-tool-server")), options);
    }
    std::shared_ptr<MCPConnection> http(const QUrl &url)
    {
        return std::make_shared<MCPConnection>([&](const std::shared_ptr<PendingRequests> &requests) {
            return std::make_unique<HttpTransport>(url.toString(), scheduler, client, requests);
        });
    }

    void connect(const std::shared_ptr<MCPConnection> &connection)
    {
        runTask(scheduler, connection->connect());
    }
    ToolResult call(const std::shared_ptr<MCPConnection> &connection, const QString &name,
                    boost::json::object arguments = {})
    {
        return runTask(scheduler, connection->callTool(name, std::move(arguments)));
    }
    /// How a task fails; nothing if it does not.
    template <class T> std::optional<QString> failureOf(Task<T> task)
    {
        try {
            runTask(scheduler, std::move(task), std::chrono::seconds(30));
        } catch (const MCPError &error) {
            return error.message();
        }
        return std::nullopt;
    }

    QString pidFile() const { return folder.filePath(QStringLiteral("pids")); }
    QList<pid_t> pids() const
    {
        QFile file(pidFile());
        QList<pid_t> list;
        if (file.open(QIODevice::ReadOnly)) {
            for (const QByteArray &line : file.readAll().split('\n'))
                if (!line.isEmpty())
                    list.append(line.toInt());
        }
        return list;
    }
    /// What a line of one of the process's files in /proc says.
    static QByteArray field(pid_t process, const QString &name, const QByteArray &field)
    {
        QFile file(QStringLiteral("/proc/%1/%2").arg(process).arg(name));
        if (file.open(QIODevice::ReadOnly)) {
            for (const QByteArray &line : file.readAll().split('\n'))
                if (line.startsWith(field + ':'))
                    return line.mid(field.size() + 1).trimmed();
        }
        return {};
    }
    static qint64 number(pid_t process, const QString &name, const QByteArray &key)
    {
        return field(process, name, key).split(' ').first().toLongLong();
    }
    static bool isAlive(pid_t process) { return QDir(QStringLiteral("/proc/%1").arg(process)).exists(); }
    static bool areGone(const QList<pid_t> &processes)
    {
        return waitUntil(
            [&processes] { return std::none_of(processes.begin(), processes.end(), &McpTest::isAlive); });
    }

    QTemporaryDir folder;
    SystemClock clock;
    Scheduler scheduler{clock};
    HttpClient client;
    StdioThread thread{guard()};
};

} // namespace morvane
