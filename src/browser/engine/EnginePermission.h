#pragma once

#include "browser/pages/PagePermission.h"
#include "browser/pages/SiteOf.h"

#include <QPointer>
#include <QUrl>
#include <QWebEnginePage>
#include <memory>

namespace morvane {

/// What a page of the web engine asks for.
class EnginePermission final : public PagePermission {
    Q_OBJECT
public:
    /// Null for what no page ever gets.
    static std::shared_ptr<EnginePermission> make(QWebEnginePage &page, const QUrl &origin,
                                                  QWebEnginePage::Feature feature);
    ~EnginePermission() override;

    /// Whether it waits for the answer to such a request.
    bool isFor(const QUrl &origin, QWebEnginePage::Feature feature) const
    {
        return m_page && origin == m_origin && feature == m_feature;
    }

    Kind kind() const override { return m_kind; }
    QString site() const override { return siteOf(m_origin); }
    void grant() override { answer(QWebEnginePage::PermissionGrantedByUser); }
    void refuse() override { answer(QWebEnginePage::PermissionDeniedByUser); }

private:
    EnginePermission(QWebEnginePage &page, QUrl origin, QWebEnginePage::Feature feature, Kind kind);
    void answer(QWebEnginePage::PermissionPolicy policy);

    QPointer<QWebEnginePage> m_page;
    QUrl m_origin;
    QWebEnginePage::Feature m_feature;
    Kind m_kind;
};

} // namespace morvane
