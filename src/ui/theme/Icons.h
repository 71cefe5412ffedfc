#pragma once

#include <QColor>
#include <QIcon>
#include <QPixmap>
#include <QString>

namespace morvane {

/// The drawn symbols of the program, each one SVG under resources/icons in a single colour.
enum class Symbol {
    arrowClockwise,
    arrowDownCircle,
    arrowLeft,
    arrowRight,
    arrowRightCircle,
    arrowUp,
    bell,
    bookmark,
    check,
    checkCircle,
    chevronDown,
    chevronUp,
    circleDashed,
    clock,
    compose,
    copy,
    cross,
    crossCircle,
    display,
    document,
    documentLocked,
    documentPlain,
    folder,
    gear,
    globe,
    handTap,
    laptop,
    list,
    octagonExclamation,
    paperclip,
    photo,
    plus,
    puzzle,
    question,
    server,
    share,
    shieldExclamation,
    shieldLock,
    stop,
    trash,
    triangleExclamation,
    wrench
};

/// The symbol as an icon in the text colour of buttons; follows the palette by itself. Cheap: nothing is
/// read before the icon is first painted.
QIcon symbolIcon(Symbol symbol);

/// The symbol drawn at `size` logical pixels in `color`; kept in QPixmapCache.
QPixmap symbolPixmap(Symbol symbol, int size, const QColor &color, qreal devicePixelRatio);

} // namespace morvane
