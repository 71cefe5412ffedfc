#pragma once

#include "browser/pages/PageDownload.h"
#include "browser/tabs/RefusedSites.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <functional>
#include <memory>

namespace morvane {

class Announcer;
class BrowserWindow;

/// The files that pages hand over, from the question where to write each to its end. One is asked about at a
/// time. Main thread.
class Downloads : public QObject {
    Q_OBJECT
public:
    using Download = std::shared_ptr<PageDownload>;

    /// `window` gives the window that asks, or null.
    Downloads(Announcer &announcer, std::function<BrowserWindow *()> window);

    /// Takes a download that a page offers. Too many at once, and those of a site that goes on offering, are
    /// refused without a question.
    void add(const Download &download);
    /// The window has gone, and its question with it.
    void windowClosed();
    /// Sites that were refused may offer again.
    void forgetRefusals() { m_refused.forget(); }

    /// Those that are being written, the oldest first.
    const QList<Download> &running() const { return m_running; }
    /// Why the question that stands is asked again; empty mostly.
    const QString &problem() const { return m_problem; }

Q_SIGNALS:
    /// One has begun or ended, or has got further; or there is a problem, or none any more.
    void changed();

private:
    void askForNext();
    void setProblem(const QString &problem);
    bool isTaken(const QString &path) const;
    QString freeName(const QString &name) const;
    void start(const Download &download, const QString &path);
    void end(const PageDownload *download);

    Announcer &m_announcer;
    std::function<BrowserWindow *()> m_window;
    RefusedSites m_refused;
    QList<Download> m_waiting; ///< The first is the one that is asked about.
    QList<Download> m_running;
    QHash<const PageDownload *, QString> m_places; ///< Where those that are running go.
    QString m_problem;
};

} // namespace morvane
