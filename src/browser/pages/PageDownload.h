#pragma once

#include <QObject>
#include <QString>

namespace morvane {

/// A file that a page wants to hand over. It waits until it is accepted or cancelled; destroying it cancels
/// it. Main thread.
class PageDownload : public QObject {
    Q_OBJECT
public:
    /// A file name without a folder, fit to be offered; never empty.
    virtual QString suggestedFileName() const = 0;
    /// The host that it comes from; may be empty.
    virtual QString site() const = 0;
    /// Writes to `path`, a whole path that the user has chosen. Once.
    virtual void accept(const QString &path) = 0;
    virtual void cancel() = 0;

    virtual qint64 receivedBytes() const = 0;
    /// -1 while it is unknown.
    virtual qint64 totalBytes() const = 0;

Q_SIGNALS:
    void progressed();
    // One of these ends it.
    void finished();
    void failed(const QString &description);
    void cancelled();
};

} // namespace morvane
