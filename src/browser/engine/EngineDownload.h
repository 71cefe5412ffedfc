#pragma once

#include "browser/pages/PageDownload.h"

#include <QPointer>
#include <QTemporaryDir>

class QWebEngineDownloadRequest;

namespace morvane {

/// A download of the web engine, which wants to know at once where it goes: it begins in a folder of ours,
/// and is moved once the user has said where it belongs and it is whole. Until the user has said so no more
/// than some megabytes of it are taken.
class EngineDownload final : public PageDownload {
    Q_OBJECT
public:
    /// `folder` is there, on the disk that the user's files are likely to be on. The request belongs to the
    /// engine, which may end before this.
    EngineDownload(QWebEngineDownloadRequest &request, const QString &folder);
    ~EngineDownload() override;

    /// The engine begins it again by itself, as another request, when the connection was lost.
    void take(QWebEngineDownloadRequest &request);
    bool isOf(quint32 id) const { return m_id == id; }
    /// All connections have ended without a word; what is not there yet never comes.
    void connectionsEnded();

    QString suggestedFileName() const override { return m_name; }
    QString site() const override { return m_site; }
    void accept(const QString &path) override;
    void cancel() override;
    qint64 receivedBytes() const override;
    qint64 totalBytes() const override;

private:
    void progress();
    void pauseUnlessWanted();
    void follow();
    void fail(const QString &reason);
    void deliver();
    void delivered(const QString &failure);

    QPointer<QWebEngineDownloadRequest> m_request;
    quint32 m_id; ///< The engine's, which all requests for it share.
    QString m_name;
    QString m_site;
    const QString m_heldName;
    QTemporaryDir m_held;
    QString m_destination; ///< Empty until the user has chosen it.
    bool m_isWhole = false;
    QString m_failure; ///< That came before the user has chosen.
};

} // namespace morvane
