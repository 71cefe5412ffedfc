#include "browser/engine/EngineFactory.h"

#include "base/AtomicFile.h"
#include "browser/engine/EngineDownload.h"
#include "browser/engine/EngineWebPage.h"
#include "browser/engine/Log.h"
#include "browser/pages/SiteOf.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QThreadPool>
#include <QWebEngineCookieStore>
#include <QWebEngineDownloadRequest>
#include <QWebEngineNotification>
#include <QWebEngineSettings>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

QString profileFolder(const QString &folder)
{
    return folder + u"/Profile"_s;
}

QString cacheFolder(const QString &folder)
{
    return folder + u"/Cache"_s;
}

QFileInfoList caches(const QString &folder)
{
    return QDir(folder).entryInfoList({u"Cache*"_s}, QDir::Dirs);
}

/// Whether none of them is left. Any thread; blocks.
bool remove(const QFileInfoList &caches)
{
    bool areGone = true;
    for (const QFileInfo &cache : caches)
        areGone = QDir(cache.filePath()).removeRecursively() && areGone;
    return areGone;
}

/// Where files wait for the place that the user chooses.
QString downloadFolder(const QString &folder)
{
    return folder + u"/Downloads"_s;
}

/// Says that what sites have stored is to go, once the engine does not hold it.
QString removalMark(const QString &folder)
{
    return folder + u"/remove-site-data"_s;
}

/// The folder as the engine is to find it.
QString preparedFolder(const QString &folder)
{
    if (!ensurePrivateFolder(folder))
        return folder;
    // What a program left that was killed.
    QDir(downloadFolder(folder)).removeRecursively();
    if (const auto isThere = ensurePrivateFolder(downloadFolder(folder)); !isThere)
        qCWarning(engineLog) << "no folder for downloads:" << isThere.error();
    if (QFile::exists(removalMark(folder)) && QDir(profileFolder(folder)).removeRecursively() &&
        remove(caches(folder)))
        QFile::remove(removalMark(folder));
    return folder;
}

} // namespace

EngineFactory::EngineFactory(const EngineOptions &options)
    : m_folder(preparedFolder(options.folder)), m_now(options.now), m_profile(u"Morvane"_s)
{
    m_profile.setPersistentStoragePath(profileFolder(m_folder));
    m_profile.setCachePath(cacheFolder(m_folder));
    m_profile.setHttpAcceptLanguage(QLocale::system().uiLanguages().join(u','));
    QWebEngineSettings &settings = *m_profile.settings();
    // The page stays as it was, and what went wrong is told by the program.
    settings.setAttribute(QWebEngineSettings::ErrorPageEnabled, false);
    settings.setAttribute(QWebEngineSettings::PluginsEnabled, true);
    settings.setAttribute(QWebEngineSettings::PdfViewerEnabled, true);
    settings.setAttribute(QWebEngineSettings::LocalContentCanAccessFileUrls, false);
    settings.setAttribute(QWebEngineSettings::LocalContentCanAccessRemoteUrls, false);
    settings.setAttribute(QWebEngineSettings::FocusOnNavigationEnabled, false);
    settings.setAttribute(QWebEngineSettings::WebRTCPublicInterfacesOnly, true);
    // Frames of a page would start other programs with it.
    settings.setUnknownUrlSchemePolicy(QWebEngineSettings::DisallowUnknownUrlSchemes);
    m_profile.setNotificationPresenter(
        [show = options.showNotification](const std::unique_ptr<QWebEngineNotification> &notification) {
            if (!show)
                return;
            show({siteOf(notification->origin()), notification->title(), notification->message()});
            notification->show();
        });
    QObject::connect(&m_profile, &QWebEngineProfile::downloadRequested, &m_pages,
                     [this](QWebEngineDownloadRequest *request) { download(*request); });
}

EngineFactory::~EngineFactory()
{
    // Before the profile; the list changes with each that goes.
    const QObjectList pages = m_pages.children();
    qDeleteAll(pages);
}

std::unique_ptr<WebPage> EngineFactory::makePage()
{
    auto page = std::make_unique<EngineWebPage>(m_profile, m_now, m_pages);
    std::erase_if(m_ours, [](const auto &ours) { return ours.isNull(); });
    m_ours.emplace_back(page.get());
    return page;
}

void EngineFactory::removeAllSiteData()
{
    if (const auto written = writeFileAtomically(removalMark(m_folder), {}); !written)
        qCWarning(engineLog) << "what sites have stored stays after the next start:" << written.error();
    m_profile.clearAllVisitedLinks();
    // Those that the engine has not written yet, and those that it then reads anew.
    m_profile.cookieStore()->deleteAllCookies();
    takeNewCache();
    m_profile.cookieStore()->deleteAllCookies();
    // The engine lets go of what sites have stored for scripts only when it ends; where a page is open, the
    // page can take it away. Whoever hears of an end may open and close pages.
    for (const auto &page : std::vector(m_ours)) {
        if (!page)
            continue;
        page->removeSiteData();
        page->connectionsEnded();
    }
    for (const auto &known : std::vector(m_downloads))
        if (const auto file = known.lock())
            file->connectionsEnded();
}

void EngineFactory::takeNewCache()
{
    // Where the engine clears a cache it ends all connections some time later, nobody hears when, and loses
    // without a word the loads that are under way then. With another folder it does so before it returns.
    const QFileInfoList before = caches(m_folder);
    QString next;
    do
        next = cacheFolder(m_folder) + u'-' + QString::number(++m_caches);
    while (QFileInfo::exists(next)); // left by a run that could not remove it
    m_profile.setCachePath(next);
    // It may still write a list of what the old one held. That, and what cannot be removed now, goes before
    // the next start.
    QThreadPool::globalInstance()->start([before] { static_cast<void>(remove(before)); });
}

void EngineFactory::download(QWebEngineDownloadRequest &request)
{
    std::erase_if(m_downloads, [](const auto &known) { return known.expired(); });
    for (const auto &known : m_downloads) {
        const auto file = known.lock();
        if (file && file->isOf(request.id())) {
            file->take(request);
            return;
        }
    }
    // Its own page may be gone, and the engine ends the program when it is asked for that.
    const auto place = std::ranges::find_if(m_ours, [](const auto &ours) { return !ours.isNull(); });
    if (place == m_ours.end())
        return;
    const auto file = std::make_shared<EngineDownload>(request, downloadFolder(m_folder));
    m_downloads.push_back(file);
    Q_EMIT(*place)->downloadRequested(file);
}

} // namespace morvane
