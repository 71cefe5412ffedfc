#pragma once

#include "app/BrowserWindowPort.h"
#include "app/NotificationPort.h"
#include "async/Sleep.h"
#include "localmodel/InstallError.h"
#include "localmodel/LocalModelRuntime.h"
#include "platform/UrlOpener.h"
#include "tools/ToolServerPort.h"

#include <QStringList>
#include <utility>

namespace morvane {

/// Remembers notifications and sounds.
class FakeNotifications final : public NotificationPort {
public:
    void notify(const QString &response, Outcome outcome) override { notified.append({response, outcome}); }
    void playSound(const QString &name) override { sounds.append(name); }

    QList<std::pair<QString, Outcome>> notified;
    QStringList sounds;
};

/// One connected tool server whose tools answer with `result`.
class FakeToolServers final : public ToolServerPort {
public:
    QList<AITool> exposedAITools() const override { return tools; }
    Task<ToolResult> execute(ToolPermit permit) override
    {
        executed.append(permit.call().name);
        co_return result;
    }

    QList<AITool> tools;
    QString result = QStringLiteral("server result");
    QStringList executed;
};

class FakeBrowserWindow final : public BrowserWindowPort {
public:
    bool isAvailable() const override { return problemText.isEmpty(); }
    QString problem() const override { return problemText; }
    bool isVisible() const override { return visible; }
    void show() override { visible = true; }
    void stop() override { ++stops; }

    bool visible = false;
    int stops = 0;
    QString problemText;
};

/// Remembers the pages that the user was to see.
class FakeUrlOpener final : public UrlOpener {
public:
    bool open(const QUrl &url) override
    {
        opened.append(url);
        return works;
    }
    bool openOwnPage(const QString &path) override
    {
        ownPages.append(path);
        return works;
    }
    bool beginMail(const QString &text) override
    {
        mails.append(text);
        return works;
    }

    QList<QUrl> opened;
    QStringList ownPages;
    QStringList mails;
    bool works = true;
};

/// A local model runtime whose state and installation a test decides.
class FakeLocalModel final : public LocalModelRuntime {
public:
    bool isBinaryInstalled() const override { return binaryInstalled; }
    /// Answers what was so when it was asked.
    Task<bool> isServerRunning() override
    {
        const bool running = serverRunning;
        if (probeTime.count() > 0)
            co_await sleepFor(probeTime);
        co_return running;
    }
    Task<QStringList> installedModels() override { co_return models; }
    Task<void> requireFreeDiskSpace(qint64 bytes, QString what) override
    {
        spaceAskedFor.append({bytes, what});
        if (!spaceFailure.isEmpty())
            throw InstallError(spaceFailure);
        co_return;
    }
    Task<void> ensureRunning(ProgressCallback onProgress) override
    {
        ++installations;
        progress = onProgress;
        onProgress(QStringLiteral("Starting Ollama…"), std::nullopt);
        if (installationTime.count() > 0)
            co_await sleepFor(installationTime);
        if (!failure.isEmpty())
            throw InstallError(failure);
        serverRunning = true;
    }
    Task<void> pull(QString model, ProgressCallback onProgress) override
    {
        pulled.append(model);
        progress = onProgress;
        onProgress(QStringLiteral("Downloading model… 42%"), 0.42);
        if (pullTime.count() > 0)
            co_await sleepFor(pullTime);
        if (!pullFailure.isEmpty())
            throw InstallError(pullFailure);
        models.append(model);
    }
    Task<void> remove(QString model) override
    {
        removed.append(model);
        if (!removeFailure.isEmpty())
            throw InstallError(removeFailure);
        models.removeAll(model);
        co_return;
    }
    Task<void> unload(QString model) override
    {
        unloaded.append(model);
        if (!unloadFailure.isEmpty())
            throw InstallError(unloadFailure);
        co_return;
    }

    bool binaryInstalled = false;
    bool serverRunning = false;
    QStringList models;
    QString failure;
    QString spaceFailure;
    QString pullFailure;
    QString removeFailure;
    QString unloadFailure;
    QList<std::pair<qint64, QString>> spaceAskedFor;
    QStringList pulled;
    QStringList removed;
    QStringList unloaded;
    Clock::Duration probeTime{};
    Clock::Duration installationTime{};
    Clock::Duration pullTime{};
    int installations = 0;
    ProgressCallback progress; ///< Of what is under way; not to be called after its end.
};

} // namespace morvane
