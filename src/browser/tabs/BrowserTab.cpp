#include "browser/tabs/BrowserTab.h"

#include "base/Uuid.h"
#include "browser/pages/SiteOf.h"

using namespace Qt::StringLiterals;

namespace morvane {

BrowserTab::BrowserTab(std::unique_ptr<WebPage> page) : m_id(newUuid()), m_page(std::move(page)) {}

void BrowserTab::setTitle(const QString &title)
{
    m_title = title;
    Q_EMIT changed();
}

void BrowserTab::setFavicon(const QImage &favicon)
{
    m_favicon = favicon;
    Q_EMIT changed();
}

void BrowserTab::setZoom(double zoom)
{
    m_zoom = zoom;
    m_page->setZoom(zoom);
    Q_EMIT changed();
}

void BrowserTab::followPage()
{
    const QUrl address = m_page->address();
    const QString host = siteOf(address);
    m_title = m_page->title();
    if (m_title.isEmpty())
        m_title = host.isEmpty() ? u"New Tab"_s : host;
    m_urlString = QString::fromLatin1(address.toEncoded());
    m_canGoBack = m_page->canGoBack();
    m_canGoForward = m_page->canGoForward();
    Q_EMIT changed();
}

} // namespace morvane
