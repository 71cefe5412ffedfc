#include "localmodel/RuntimeInstaller.h"

#include "async/CheckCancelled.h"
#include "async/CurrentContext.h"
#include "async/OffMain.h"
#include "async/Sleep.h"
#include "base/AtomicFile.h"
#include "localmodel/ByteString.h"
#include "localmodel/InstallError.h"
#include "localmodel/Log.h"
#include "localmodel/ProgressPace.h"
#include "localmodel/RuntimeFolder.h"
#include "net/DownloadError.h"
#include "net/FileDownload.h"
#include "net/HttpClient.h"
#include "net/Log.h"
#include "net/PartialFile.h"

#include <QDir>
#include <QSysInfo>
#include <QUrl>
#include <atomic>
#include <memory>

using namespace Qt::StringLiterals;

using namespace std::chrono_literals;

namespace morvane {

namespace {

/// Several times what the archive takes today.
constexpr qint64 maximumArchiveBytes = 8'000'000'000;
constexpr int attempts = 3;
constexpr auto betweenAttempts = 1s;
constexpr int notFound = 404;

QString cannotBeExtracted()
{
    return u"The Ollama download could not be extracted. Please try again."_s;
}

QString diskFull()
{
    return u"The disk became full, so Ollama could not be installed. Free some space and try again."_s;
}

QString progressLine(qint64 received, std::optional<qint64> total)
{
    QString so = u"Downloading Ollama… "_s + byteString(received);
    if (!total)
        return so;
    return so + u" of %1 (%2%)"_s.arg(byteString(*total)).arg(received * 100 / *total);
}

QString messageOf(const DownloadError &error)
{
    switch (error.kind()) {
    case DownloadError::Kind::refused:
        return u"Ollama could not be downloaded. The server answered with HTTP status %1."_s.arg(
            error.status());
    case DownloadError::Kind::tooLarge:
    case DownloadError::Kind::unusable:
        return u"Ollama could not be downloaded. The server's answer could not be used."_s;
    case DownloadError::Kind::diskFull:
        return diskFull();
    case DownloadError::Kind::disk:
        return u"Ollama could not be installed. "_s + error.reason();
    }
    return {};
}

QString messageOf(const UnpackError &error)
{
    switch (error.kind) {
    case UnpackError::Kind::diskFull:
        return diskFull();
    case UnpackError::Kind::disk:
        return u"Ollama could not be installed. "_s + error.reason;
    case UnpackError::Kind::damaged:
    case UnpackError::Kind::hostile:
    case UnpackError::Kind::tooLarge:
    case UnpackError::Kind::stopped:
        return cannotBeExtracted();
    }
    return {};
}

/// Whether the archive that was unpacked is to be kept for the next attempt.
bool isWorthKeeping(const UnpackError &error)
{
    return error.kind == UnpackError::Kind::stopped || error.kind == UnpackError::Kind::disk;
}

} // namespace

QStringList runtimeArchives(const QString &processor)
{
    QString name;
    if (processor == "x86_64"_L1)
        name = u"amd64"_s;
    else if (processor == "arm64"_L1)
        name = u"arm64"_s;
    else
        return {};
    return {u"ollama-linux-%1.tar.zst"_s.arg(name), u"ollama-linux-%1.tgz"_s.arg(name)};
}

RuntimeInstaller::RuntimeInstaller(HttpClient &http, QString site, QString dataFolder)
    : m_http(http), m_site(std::move(site)), m_dataFolder(std::move(dataFolder))
{
}

QString RuntimeInstaller::archivePath(const QString &name) const
{
    return m_dataFolder + u'/' + name + u".part"_s;
}

Task<QString> RuntimeInstaller::install(LocalModelRuntime::ProgressCallback onProgress)
{
    const RuntimeFolder folder(m_dataFolder);
    const auto ready = co_await runOffMain([folder, dataFolder = m_dataFolder] {
        folder.removeRemains();
        return ensurePrivateFolder(dataFolder);
    });
    if (!ready)
        throw InstallError(u"Ollama could not be installed. "_s + ready.error());
    const QString archive = co_await download(onProgress);
    onProgress(u"Installing Ollama…"_s, std::nullopt);

    const TaskContext context = co_await currentContext();
    const auto stop = std::make_shared<std::atomic<bool>>(false);
    const Cancellation::Callback whenCancelled(*context.cancellation, [stop] { stop->store(true); });
    const auto unpacked = co_await runOffMain([folder, archive, stop] {
        auto result = folder.install(archive, stop);
        if (result || !isWorthKeeping(result.error()))
            PartialFile::remove(archive);
        return result;
    });
    co_await checkCancelled();
    if (!unpacked) {
        qCWarning(localModelLog) << "the runtime was not unpacked:" << unpacked.error().reason;
        throw InstallError(messageOf(unpacked.error()));
    }
    co_return folder.program();
}

Task<QString> RuntimeInstaller::download(LocalModelRuntime::ProgressCallback onProgress)
{
    const QStringList names = runtimeArchives(QSysInfo::currentCpuArchitecture());
    if (names.isEmpty())
        throw InstallError(u"There is no Ollama for this computer's processor."_s);
    for (const QString &name : names) {
        QString failure;
        bool isMissing = false;
        try {
            co_await downloadWithRetries(name, onProgress);
        } catch (const DownloadError &error) {
            qCWarning(localModelLog) << "the runtime was not downloaded:" << error.status() << error.reason();
            failure = messageOf(error);
            isMissing = error.status() == notFound;
        } catch (const TransportError &error) {
            qCWarning(localModelLog) << "the runtime was not downloaded:" << reasonOf(error);
            failure = u"Ollama could not be downloaded. "_s + TransportError(error.kind()).description();
        }
        if (failure.isEmpty())
            co_return archivePath(name);
        if (!isMissing || name == names.constLast())
            throw InstallError(failure);
        co_await runOffMain([path = archivePath(name)] { PartialFile::remove(path); });
    }
    co_return QString();
}

Task<void> RuntimeInstaller::downloadWithRetries(QString name, LocalModelRuntime::ProgressCallback onProgress)
{
    const TaskContext context = co_await currentContext();
    ProgressPace pace(context.scheduler->clock(), std::move(onProgress));
    const QString path = archivePath(name);
    DownloadOrder order{QUrl(m_site + u"/download/"_s + name), path, maximumArchiveBytes,
                        [&pace](qint64 received, std::optional<qint64> total) {
                            std::optional<double> fraction;
                            if (total)
                                fraction = static_cast<double>(received) / static_cast<double>(*total);
                            pace.report(progressLine(received, total), fraction);
                        }};
    for (int attempt = 1;; ++attempt) {
        std::exception_ptr failure;
        bool isFull = false;
        try {
            co_await downloadFile(&m_http, order);
            co_return;
        } catch (const TransportError &error) {
            qCInfo(localModelLog) << "attempt" << attempt << "of the download:" << reasonOf(error);
            failure = std::current_exception();
        } catch (const DownloadError &error) {
            isFull = error.kind() == DownloadError::Kind::diskFull;
            failure = std::current_exception();
        }
        if (isFull)
            co_await runOffMain([path] { PartialFile::remove(path); });
        const bool canGoOn =
            !isFull && co_await runOffMain([path] { return PartialFile::canBeResumed(path); });
        if (!canGoOn || attempt == attempts)
            std::rethrow_exception(failure);
        co_await sleepFor(betweenAttempts);
    }
}

} // namespace morvane
