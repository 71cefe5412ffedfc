#include "ui/theme/Icons.h"

#include "ui/theme/SymbolIconEngine.h"

#include <QFile>
#include <QPainter>
#include <QPixmapCache>
#include <QSvgRenderer>

namespace morvane {

namespace {

QString fileName(Symbol symbol)
{
    switch (symbol) {
    case Symbol::arrowRight:
        return QStringLiteral("arrow-right");
    case Symbol::arrowRightCircle:
        return QStringLiteral("arrow-right-circle");
    case Symbol::arrowUp:
        return QStringLiteral("arrow-up");
    case Symbol::check:
        return QStringLiteral("check");
    case Symbol::checkCircle:
        return QStringLiteral("check-circle");
    case Symbol::chevronDown:
        return QStringLiteral("chevron-down");
    case Symbol::compose:
        return QStringLiteral("compose");
    case Symbol::copy:
        return QStringLiteral("copy");
    case Symbol::cross:
        return QStringLiteral("cross");
    case Symbol::crossCircle:
        return QStringLiteral("cross-circle");
    case Symbol::document:
        return QStringLiteral("document");
    case Symbol::documentPlain:
        return QStringLiteral("document-plain");
    case Symbol::gear:
        return QStringLiteral("gear");
    case Symbol::globe:
        return QStringLiteral("globe");
    case Symbol::laptop:
        return QStringLiteral("laptop");
    case Symbol::list:
        return QStringLiteral("list");
    case Symbol::octagonExclamation:
        return QStringLiteral("octagon-exclamation");
    case Symbol::paperclip:
        return QStringLiteral("paperclip");
    case Symbol::photo:
        return QStringLiteral("photo");
    case Symbol::question:
        return QStringLiteral("question");
    case Symbol::shieldExclamation:
        return QStringLiteral("shield-exclamation");
    case Symbol::stop:
        return QStringLiteral("stop");
    case Symbol::trash:
        return QStringLiteral("trash");
    case Symbol::triangleExclamation:
        return QStringLiteral("triangle-exclamation");
    case Symbol::wrench:
        return QStringLiteral("wrench");
    }
    Q_UNREACHABLE();
}

} // namespace

QIcon symbolIcon(Symbol symbol)
{
    return QIcon(new SymbolIconEngine(symbol, QPalette::ButtonText));
}

QIcon symbolIconOnAccent(Symbol symbol)
{
    return QIcon(new SymbolIconEngine(symbol, QPalette::HighlightedText));
}

QPixmap symbolPixmap(Symbol symbol, int size, const QColor &color, qreal devicePixelRatio)
{
    const int pixels = qMax(1, qRound(size * devicePixelRatio));
    const QString key = QStringLiteral("morvane-symbol-%1-%2-%3")
                            .arg(static_cast<int>(symbol))
                            .arg(pixels)
                            .arg(color.rgba(), 8, 16, QLatin1Char('0'));
    QPixmap pixmap;
    if (!QPixmapCache::find(key, &pixmap)) {
        pixmap = QPixmap(pixels, pixels);
        pixmap.fill(Qt::transparent);
        QFile file(QStringLiteral(":/icons/%1.svg").arg(fileName(symbol)));
        if (file.open(QIODevice::ReadOnly)) {
            QSvgRenderer renderer(file.readAll().replace("currentColor", color.name().toLatin1()));
            QPainter painter(&pixmap);
            renderer.render(&painter, QRectF(0, 0, pixels, pixels));
        }
        QPixmapCache::insert(key, pixmap);
    }
    pixmap.setDevicePixelRatio(devicePixelRatio);
    return pixmap;
}

} // namespace morvane
