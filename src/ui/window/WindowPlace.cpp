#include "ui/window/WindowPlace.h"

#include "store/SettingsStore.h"
#include "ui/controls/ScreenRoom.h"

#include <QSplitter>
#include <QWidget>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr QSize standardSize{760, 720};
constexpr QSize smallestSize{600, 640};
/// Of the standard width, whatever the font: large type needs the room beside it more than the titles do.
constexpr int firstSidebar = 200;

const auto geometryKey = u"windowGeometry"_s;
const auto sidebarKey = u"sidebarWidth"_s;

} // namespace

void WindowPlace::restore(QWidget &window, QSplitter &split) const
{
    const QSize room = screenRoom(window);
    window.setMinimumSize(smallestSize.boundedTo(room));
    window.resize(standardSize.boundedTo(room));
    const QVariant geometry = m_settings.value(geometryKey);
    if (geometry.isValid())
        window.restoreGeometry(QByteArray::fromBase64(geometry.toByteArray()));
    const int sidebar = m_settings.value(sidebarKey).toInt();
    const int shown = sidebar > 0 && sidebar < window.width() ? sidebar : firstSidebar;
    split.setSizes({shown, qMax(1, window.width() - shown)});
}

void WindowPlace::remember(const QWidget &window, const QSplitter &split)
{
    const QByteArray geometry = window.saveGeometry().toBase64();
    if (m_settings.value(geometryKey).toByteArray() != geometry)
        m_settings.setValue(geometryKey, QString::fromLatin1(geometry));
    const int sidebar = split.sizes().value(0);
    if (sidebar > 0 && m_settings.value(sidebarKey).toInt() != sidebar)
        m_settings.setValue(sidebarKey, sidebar);
}

} // namespace morvane
