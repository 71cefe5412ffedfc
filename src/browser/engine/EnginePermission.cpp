#include "browser/engine/EnginePermission.h"

#include <optional>
#include <utility>

namespace morvane {
namespace {

std::optional<PagePermission::Kind> kindOf(QWebEnginePage::Feature feature)
{
    switch (feature) {
    case QWebEnginePage::Geolocation:
        return PagePermission::Kind::location;
    case QWebEnginePage::MediaAudioCapture:
        return PagePermission::Kind::microphone;
    case QWebEnginePage::MediaVideoCapture:
        return PagePermission::Kind::camera;
    case QWebEnginePage::MediaAudioVideoCapture:
        return PagePermission::Kind::microphoneAndCamera;
    case QWebEnginePage::DesktopVideoCapture:
    case QWebEnginePage::DesktopAudioVideoCapture:
        return PagePermission::Kind::screen;
    case QWebEnginePage::Notifications:
        return PagePermission::Kind::notifications;
    default:
        return std::nullopt;
    }
}

} // namespace

std::shared_ptr<EnginePermission> EnginePermission::make(QWebEnginePage &page, const QUrl &origin,
                                                         QWebEnginePage::Feature feature)
{
    const auto kind = kindOf(feature);
    if (!kind)
        return nullptr;
    return std::shared_ptr<EnginePermission>(new EnginePermission(page, origin, feature, *kind));
}

EnginePermission::EnginePermission(QWebEnginePage &page, QUrl origin, QWebEnginePage::Feature feature,
                                   Kind kind)
    : m_page(&page), m_origin(std::move(origin)), m_feature(feature), m_kind(kind)
{
    connect(&page, &QObject::destroyed, this, &PagePermission::withdrawn);
}

EnginePermission::~EnginePermission()
{
    // A page that is never answered waits for ever.
    refuse();
}

void EnginePermission::answer(QWebEnginePage::PermissionPolicy policy)
{
    if (QWebEnginePage *const page = std::exchange(m_page, nullptr))
        page->setFeaturePermission(m_origin, m_feature, policy);
}

} // namespace morvane
