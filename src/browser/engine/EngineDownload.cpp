#include "browser/engine/EngineDownload.h"

#include "browser/engine/FileNames.h"
#include "browser/engine/LoadError.h"
#include "browser/pages/SiteOf.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryFile>
#include <QThreadPool>
#include <QWebEngineDownloadRequest>
#include <filesystem>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// What is taken before the user has said whether the file is wanted.
constexpr qint64 mostUnasked = 8 * 1024 * 1024;

/// The engine adds an ending to the name of a page that has none.
QString heldName(const QWebEngineDownloadRequest &request)
{
    return request.isSavePageDownload() ? u"file.mhtml"_s : u"file"_s;
}

/// Puts the file in its place, whole and at once even from another disk. Any thread; blocks.
bool moved(const QString &from, const QString &to)
{
    namespace fs = std::filesystem;
    const fs::path source(QFile::encodeName(from).toStdString());
    const fs::path place(QFile::encodeName(to).toStdString());
    std::error_code failure;
    fs::rename(source, place, failure);
    if (failure != std::errc::cross_device_link)
        return !failure;
    // Under a name that nobody has; what is not whole goes again.
    QTemporaryFile part(QFileInfo(to).path() + u"/download-XXXXXX.part"_s);
    if (!part.open())
        return false;
    const fs::path beside(QFile::encodeName(part.fileName()).toStdString());
    fs::copy_file(source, beside, fs::copy_options::overwrite_existing, failure);
    if (!failure)
        fs::rename(beside, place, failure);
    part.setAutoRemove(bool(failure));
    return !failure;
}

QString reason(QWebEngineDownloadRequest::DownloadInterruptReason reason)
{
    switch (reason) {
    case QWebEngineDownloadRequest::FileNoSpace:
        return u"The disk is full."_s;
    case QWebEngineDownloadRequest::FileAccessDenied:
        return u"The folder does not take files."_s;
    case QWebEngineDownloadRequest::FileFailed:
    case QWebEngineDownloadRequest::FileNameTooLong:
    case QWebEngineDownloadRequest::FileTooLarge:
        return u"The file could not be written."_s;
    case QWebEngineDownloadRequest::ServerUnauthorized:
    case QWebEngineDownloadRequest::ServerForbidden:
        return u"The server does not give the file."_s;
    default:
        return u"The connection was lost."_s;
    }
}

/// What a page has made itself has the address of the page behind a word.
QString makerOf(const QUrl &address)
{
    return address.scheme() == "blob"_L1 ? siteOf(QUrl(address.path())) : siteOf(address);
}

} // namespace

EngineDownload::EngineDownload(QWebEngineDownloadRequest &request, const QString &folder)
    : m_id(request.id()), m_name(offeredFileName(request.suggestedFileName())),
      m_site(makerOf(request.url())), m_heldName(heldName(request)), m_held(folder + u"/XXXXXX"_s)
{
    take(request);
}

void EngineDownload::take(QWebEngineDownloadRequest &request)
{
    if (!m_held.isValid()) {
        // Without a folder the engine would put it among the user's files, unasked.
        fail(u"The file could not be written."_s);
        request.cancel();
        return;
    }
    m_request = &request;
    connect(&request, &QWebEngineDownloadRequest::receivedBytesChanged, this, &EngineDownload::progress);
    connect(&request, &QWebEngineDownloadRequest::stateChanged, this, &EngineDownload::follow);
    request.setDownloadDirectory(m_held.path());
    request.setDownloadFileName(m_heldName);
    request.accept();
}

EngineDownload::~EngineDownload()
{
    cancel();
}

void EngineDownload::accept(const QString &path)
{
    m_destination = path;
    if (!m_failure.isEmpty())
        Q_EMIT failed(m_failure);
    else if (m_isWhole)
        deliver();
    else if (m_request && m_request->isPaused())
        m_request->resume();
}

void EngineDownload::cancel()
{
    if (m_request && !m_request->isFinished())
        m_request->cancel();
}

void EngineDownload::connectionsEnded()
{
    if (!m_request || m_request->isFinished())
        return;
    fail(connectionsClearedAway());
    m_request->cancel();
}

void EngineDownload::progress()
{
    // While the engine tells of progress it forgets that it was paused, and could not be told to go on.
    if (m_destination.isEmpty() && receivedBytes() > mostUnasked)
        QMetaObject::invokeMethod(this, &EngineDownload::pauseUnlessWanted, Qt::QueuedConnection);
    Q_EMIT progressed();
}

void EngineDownload::pauseUnlessWanted()
{
    if (m_destination.isEmpty() && m_request && !m_request->isFinished())
        m_request->pause();
}

void EngineDownload::fail(const QString &reason)
{
    m_failure = reason;
    if (!m_destination.isEmpty())
        Q_EMIT failed(reason);
}

void EngineDownload::deliver()
{
    const QString from = m_held.filePath(m_heldName);
    QThreadPool::globalInstance()->start([from, to = m_destination, self = QPointer(this)] {
        const QString failure = moved(from, to) ? QString() : u"The file could not be written there."_s;
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, failure] {
                if (self)
                    self->delivered(failure);
            },
            Qt::QueuedConnection);
    });
}

void EngineDownload::delivered(const QString &failure)
{
    if (failure.isEmpty())
        Q_EMIT finished();
    else
        Q_EMIT failed(failure);
}

qint64 EngineDownload::receivedBytes() const
{
    return m_request ? m_request->receivedBytes() : 0;
}

qint64 EngineDownload::totalBytes() const
{
    const qint64 total = m_request ? m_request->totalBytes() : -1;
    return total > 0 ? total : -1;
}

void EngineDownload::follow()
{
    switch (m_request->state()) {
    case QWebEngineDownloadRequest::DownloadCompleted:
        if (totalBytes() > receivedBytes())
            fail(u"The file came in part only."_s);
        else if (m_isWhole = true; !m_destination.isEmpty())
            deliver();
        return;
    case QWebEngineDownloadRequest::DownloadCancelled:
        Q_EMIT cancelled();
        return;
    case QWebEngineDownloadRequest::DownloadInterrupted:
        fail(reason(m_request->interruptReason()));
        return;
    case QWebEngineDownloadRequest::DownloadRequested:
    case QWebEngineDownloadRequest::DownloadInProgress:
        return;
    }
}

} // namespace morvane
