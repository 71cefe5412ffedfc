#pragma once

#include "browser/pages/WebPage.h"

#include <QImage>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QUuid>
#include <memory>

namespace morvane {

/// One tab of the browser: its page, and what the window shows of it. Main thread.
class BrowserTab : public QObject {
    Q_OBJECT
public:
    explicit BrowserTab(std::unique_ptr<WebPage> page);

    QUuid id() const { return m_id; }
    /// The page lives as long as the tab.
    WebPage &webView() const { return *m_page; }

    QString title() const { return m_title; }
    /// Empty on the start page.
    QString urlString() const { return m_urlString; }
    bool canGoBack() const { return m_canGoBack; }
    bool canGoForward() const { return m_canGoForward; }
    /// Null while there is none.
    QImage favicon() const { return m_favicon; }
    double zoom() const { return m_zoom; }
    /// The marks that the last reading left on the page's elements, in the order of its list.
    const QStringList &lastElementRefs() const { return m_lastElementRefs; }

    void setTitle(const QString &title);
    void setFavicon(const QImage &favicon);
    /// Shows the page so many times as large.
    void setZoom(double zoom);
    void setLastElementRefs(const QStringList &refs) { m_lastElementRefs = refs; }
    /// Takes title, address and the list of pages from the page.
    void followPage();

Q_SIGNALS:
    void changed();

private:
    const QUuid m_id;
    std::unique_ptr<WebPage> m_page;
    QString m_title = QStringLiteral("New Tab");
    QString m_urlString;
    bool m_canGoBack = false;
    bool m_canGoForward = false;
    QImage m_favicon;
    double m_zoom = 1.0;
    QStringList m_lastElementRefs;
};

} // namespace morvane
