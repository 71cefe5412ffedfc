#include "ui/window/ConversationZoom.h"

#include "platform/Announcer.h"
#include "store/SettingsStore.h"
#include "ui/conversation/ChatScrollView.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr std::array levels{50, 67, 80, 90, 100, 110, 125, 150, 175, 200, 250, 300};
constexpr int usual = 100;

const auto zoomKey = u"conversationZoom"_s;

} // namespace

ConversationZoom::ConversationZoom(ChatScrollView &view, SettingsStore &settings, Announcer &announcer,
                                   QObject *parent)
    : QObject(parent), m_view(view), m_settings(settings), m_announcer(announcer)
{
    const int remembered = settings.value(zoomKey).toInt();
    if (std::ranges::find(levels, remembered) != levels.end())
        view.setZoom(remembered);
}

bool ConversationZoom::canZoomIn() const
{
    return m_view.zoom() < levels.back();
}

bool ConversationZoom::canZoomOut() const
{
    return m_view.zoom() > levels.front();
}

bool ConversationZoom::isActualSize() const
{
    return m_view.zoom() == usual;
}

void ConversationZoom::zoomIn()
{
    if (canZoomIn())
        set(*std::ranges::upper_bound(levels, m_view.zoom()));
}

void ConversationZoom::zoomOut()
{
    if (canZoomOut())
        set(*std::prev(std::ranges::lower_bound(levels, m_view.zoom())));
}

void ConversationZoom::actualSize()
{
    set(usual);
}

void ConversationZoom::set(int percent)
{
    m_view.setZoom(percent);
    m_settings.setValue(zoomKey, percent);
    m_announcer.announce(u"Text size %1 percent."_s.arg(percent));
    Q_EMIT changed();
}

} // namespace morvane
