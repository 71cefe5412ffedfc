#include "ui/controls/ScreenRoom.h"

#include <QScreen>
#include <QWidget>

namespace morvane {
namespace {

/// Of the usual window managers; none tells before the window is there.
constexpr QSize frameRoom{8, 40};

} // namespace

QSize screenRoom(const QWidget &widget)
{
    return widget.screen()->availableSize() - frameRoom;
}

} // namespace morvane
