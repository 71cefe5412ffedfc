#pragma once

#include "browser/pages/PagePermission.h"

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

    Kind kind() const override { return m_kind; }
    QString site() const override { return m_origin.host(); }
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
