#pragma once

#include "async/SystemClock.h"
#include "localmodel/InstallError.h"
#include "localmodel/LocalModelManager.h"
#include "net/HttpClient.h"
#include "support/DownloadServer.h"
#include "support/RunTask.h"
#include "support/SampleArchive.h"
#include "support/TemporaryHome.h"
#include "support/UnusedPort.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSysInfo>
#include <csignal>
#include <gmock/gmock.h>
#include <memory>
#include <optional>
#include <unistd.h>

namespace morvane {

/// A manager on a home with a blank and a quote in its path, the scripted runtime, and a server to download
/// it from.
class RuntimeTest : public testing::Test {
protected:
    struct Report {
        QString label;
        std::optional<double> fraction;
    };

    RuntimeTest()
    {
        QDir().mkpath(data());
        QDir().mkpath(home.path(QStringLiteral("state")));
        qputenv("SCRIPTED_RUNTIME", home.path(QStringLiteral("state")).toUtf8());
    }
    ~RuntimeTest() override
    {
        scheduler.shutdown(std::chrono::seconds(5));
        if (const qint64 server = serverProcess(); server > 1)
            ::kill(static_cast<pid_t>(server), SIGKILL);
        qunsetenv("SCRIPTED_RUNTIME");
    }

    QString data() const { return home.path(QStringLiteral("it's a home/Morvane")); }
    static QString runtimeProgram()
    {
        return QCoreApplication::applicationDirPath() + QStringLiteral("/scripted-runtime");
    }
    static QByteArray contentOf(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    /// The program lies where the user, not Morvane, has put it.
    void haveProgram() { ASSERT_TRUE(QFile::link(runtimeProgram(), home.path(QStringLiteral("ollama")))); }
    void offerRuntime(SampleArchive archive = sampleRuntime(contentOf(runtimeProgram())))
    {
        downloads.setFile(archiveName(), {archive.bytes()});
    }
    static QString archiveName()
    {
        return QStringLiteral("/download/") +
               runtimeArchives(QSysInfo::currentCpuArchitecture()).constFirst();
    }
    static QString olderArchiveName()
    {
        return QStringLiteral("/download/") + runtimeArchives(QSysInfo::currentCpuArchitecture()).constLast();
    }
    void tell(const QString &file, const QByteArray &content = "x")
    {
        home.write(QStringLiteral("state/") + file, content);
    }
    QByteArray known(const QString &file) const { return home.read(QStringLiteral("state/") + file); }
    QList<QByteArray> calls() const
    {
        QList<QByteArray> lines = known(QStringLiteral("calls")).split('\n');
        lines.removeLast();
        for (QByteArray &line : lines)
            line = line.left(line.lastIndexOf(' '));
        return lines;
    }
    QList<QByteArray> serverLines() const { return known(QStringLiteral("server")).split('\n'); }
    qint64 serverProcess() const { return serverLines().value(0).toLongLong(); }

    LocalModelRuntime::ProgressCallback recording()
    {
        return [this](const QString &label, std::optional<double> fraction) {
            reports.append({label, fraction});
        };
    }
    QStringList labels() const
    {
        QStringList texts;
        for (const Report &report : reports)
            texts.append(report.label);
        return texts;
    }
    /// How a task fails in words; empty if it does not.
    template <class T> QString failureOf(Task<T> task)
    {
        try {
            runTask(scheduler, std::move(task));
        } catch (const InstallError &error) {
            return error.message();
        }
        return {};
    }

    TemporaryHome home;
    SystemClock clock;
    Scheduler scheduler{clock};
    HttpClient http;
    DownloadServer downloads;
    const quint16 port = unusedPort();
    qint64 freeSpace = 2'000'000'000;
    QList<Report> reports;
    LocalModelManager manager{http,
                              {QStringLiteral("http://127.0.0.1:%1").arg(port),
                               downloads.origin(),
                               data(),
                               {home.path(QStringLiteral("missing")), data() + QStringLiteral("/ollama"),
                                home.path(QStringLiteral("ollama"))},
                               [this] { return freeSpace; }}};
};

} // namespace morvane
