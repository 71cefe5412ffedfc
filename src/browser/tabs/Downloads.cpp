#include "browser/tabs/Downloads.h"

#include "browser/pages/PageText.h"
#include "browser/tabs/BrowserWindow.h"
#include "platform/Announcer.h"

#include <QDir>
#include <QFileInfo>
#include <QMetaObject>
#include <QPointer>
#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// A page can begin downloads without end, and each is a question.
constexpr qsizetype mostQuestions = 5;

/// One spelling for each place, however its folder is reached. A link in the place itself gives way to the
/// file.
QString placeOf(const QString &path)
{
    const QFileInfo file(path);
    const QString folder = file.dir().canonicalPath();
    return folder.isEmpty() ? QDir::cleanPath(file.absoluteFilePath()) : folder + u'/' + file.fileName();
}

} // namespace

Downloads::Downloads(Announcer &announcer, std::function<BrowserWindow *()> window)
    : m_announcer(announcer), m_window(std::move(window))
{
}

void Downloads::add(const Download &download)
{
    if (m_waiting.size() >= mostQuestions) {
        download->cancel();
        return;
    }
    m_waiting.append(download);
    if (m_waiting.size() == 1)
        askForNext();
}

void Downloads::windowClosed()
{
    setProblem({});
    const QList<Download> unanswered = std::exchange(m_waiting, {});
    for (const Download &download : unanswered)
        download->cancel();
    if (!unanswered.isEmpty())
        m_announcer.announce(u"Download cancelled."_s);
}

void Downloads::askForNext()
{
    BrowserWindow *const window = m_window();
    if (!window) {
        windowClosed();
        return;
    }
    while (!m_waiting.isEmpty() && m_refused.goesOnAsking(m_waiting.first()->site()))
        m_waiting.takeFirst()->cancel();
    if (m_waiting.isEmpty())
        return;
    const Download download = m_waiting.first();
    const QPointer<Downloads> self(this);
    window->askForDestination(freeName(download->suggestedFileName()), download->site(),
                              [self, download](const QString &path) {
                                  if (!self || !self->m_waiting.contains(download))
                                      return;
                                  if (self->isTaken(path)) {
                                      self->setProblem(u"Another download is written there."_s);
                                      self->askForNext();
                                      return;
                                  }
                                  self->setProblem({});
                                  self->m_waiting.removeOne(download);
                                  self->start(download, path);
                                  if (!self->m_waiting.isEmpty())
                                      self->askForNext();
                              });
}

void Downloads::setProblem(const QString &problem)
{
    if (!problem.isEmpty())
        m_announcer.announce(problem);
    if (m_problem == problem)
        return;
    m_problem = problem;
    Q_EMIT changed();
}

bool Downloads::isTaken(const QString &path) const
{
    return !path.isEmpty() && std::ranges::find(m_places, placeOf(path)) != m_places.end();
}

/// The save panel knows of no file that is still to come, and the one that ends last would be all that is
/// left.
QString Downloads::freeName(const QString &name) const
{
    const QFileInfo offered(name);
    const QString suffix = offered.suffix().isEmpty() ? QString() : u'.' + offered.suffix();
    const auto isUsed = [this](const QString &candidate) {
        return std::ranges::any_of(m_places, [&candidate](const QString &place) {
            return QFileInfo(place).fileName() == candidate;
        });
    };
    QString free = name;
    for (int number = 2; isUsed(free); ++number)
        free = u"%1 (%2)%3"_s.arg(offered.completeBaseName(), QString::number(number), suffix);
    return free;
}

void Downloads::start(const Download &download, const QString &path)
{
    if (path.isEmpty()) {
        m_refused.refused(download->site());
        download->cancel();
        m_announcer.announce(u"Download cancelled."_s);
        if (m_refused.goesOnAsking(download->site()))
            m_announcer.announce(u"Files from %1 are refused until an address is opened."_s.arg(
                m_refused.refusedWith(download->site())));
        return;
    }
    m_refused.agreed(download->site());
    m_running.append(download);
    m_places.insert(download.get(), placeOf(path));
    const PageDownload *const key = download.get();
    connect(key, &PageDownload::progressed, this, &Downloads::changed);
    connect(key, &PageDownload::finished, this, [this, key] {
        m_announcer.announce(u"Download complete."_s);
        end(key);
    });
    connect(key, &PageDownload::failed, this, [this, key](const QString &description) {
        m_announcer.announce(u"Download failed: "_s + description);
        end(key);
    });
    connect(key, &PageDownload::cancelled, this, [this, key] {
        m_announcer.announce(u"Download cancelled."_s);
        end(key);
    });
    m_announcer.announce(u"Download started: "_s + pageText(download->suggestedFileName()));
    download->accept(path);
    Q_EMIT changed();
}

void Downloads::end(const PageDownload *download)
{
    const auto place = std::ranges::find(m_running, download, &Download::get);
    if (place == m_running.end())
        return;
    // It still speaks, and must not go before it has ended.
    (*place)->disconnect(this);
    QMetaObject::invokeMethod(this, [kept = *place] {}, Qt::QueuedConnection);
    m_running.erase(place);
    m_places.remove(download);
    Q_EMIT changed();
}

} // namespace morvane
