#include "ui/theme/Icons.h"

#include "ui/theme/SymbolIconEngine.h"

#include <QFile>
#include <QPainter>
#include <QPixmapCache>
#include <QSvgRenderer>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

QString fileName(Symbol symbol)
{
    switch (symbol) {
    case Symbol::arrowClockwise:
        return u"arrow-clockwise"_s;
    case Symbol::arrowDownCircle:
        return u"arrow-down-circle"_s;
    case Symbol::arrowRight:
        return u"arrow-right"_s;
    case Symbol::arrowRightCircle:
        return u"arrow-right-circle"_s;
    case Symbol::arrowUp:
        return u"arrow-up"_s;
    case Symbol::check:
        return u"check"_s;
    case Symbol::checkCircle:
        return u"check-circle"_s;
    case Symbol::chevronDown:
        return u"chevron-down"_s;
    case Symbol::chevronUp:
        return u"chevron-up"_s;
    case Symbol::compose:
        return u"compose"_s;
    case Symbol::copy:
        return u"copy"_s;
    case Symbol::cross:
        return u"cross"_s;
    case Symbol::crossCircle:
        return u"cross-circle"_s;
    case Symbol::document:
        return u"document"_s;
    case Symbol::documentPlain:
        return u"document-plain"_s;
    case Symbol::gear:
        return u"gear"_s;
    case Symbol::globe:
        return u"globe"_s;
    case Symbol::laptop:
        return u"laptop"_s;
    case Symbol::list:
        return u"list"_s;
    case Symbol::octagonExclamation:
        return u"octagon-exclamation"_s;
    case Symbol::paperclip:
        return u"paperclip"_s;
    case Symbol::photo:
        return u"photo"_s;
    case Symbol::puzzle:
        return u"puzzle"_s;
    case Symbol::question:
        return u"question"_s;
    case Symbol::server:
        return u"server"_s;
    case Symbol::shieldExclamation:
        return u"shield-exclamation"_s;
    case Symbol::stop:
        return u"stop"_s;
    case Symbol::trash:
        return u"trash"_s;
    case Symbol::triangleExclamation:
        return u"triangle-exclamation"_s;
    case Symbol::shieldLock:
        return u"shield-lock"_s;
    case Symbol::display:
        return u"display"_s;
    case Symbol::handTap:
        return u"hand-tap"_s;
    case Symbol::bell:
        return u"bell"_s;
    case Symbol::folder:
        return u"folder"_s;
    case Symbol::documentLocked:
        return u"document-locked"_s;
    case Symbol::circleDashed:
        return u"circle-dashed"_s;
    case Symbol::wrench:
        return u"wrench"_s;
    case Symbol::arrowLeft:
        return u"arrow-left"_s;
    case Symbol::bookmark:
        return u"bookmark"_s;
    case Symbol::clock:
        return u"clock"_s;
    case Symbol::plus:
        return u"plus"_s;
    case Symbol::share:
        return u"share"_s;
    }
    Q_UNREACHABLE();
}

} // namespace

QIcon symbolIcon(Symbol symbol)
{
    return QIcon(new SymbolIconEngine(symbol));
}

QPixmap symbolPixmap(Symbol symbol, int size, const QColor &color, qreal devicePixelRatio)
{
    const int pixels = qMax(1, qRound(size * devicePixelRatio));
    const QString key = u"morvane-symbol-%1-%2-%3"_s.arg(static_cast<int>(symbol))
                            .arg(pixels)
                            .arg(color.rgba(), 8, 16, QChar(u'0'));
    QPixmap pixmap;
    if (!QPixmapCache::find(key, &pixmap)) {
        pixmap = QPixmap(pixels, pixels);
        pixmap.fill(Qt::transparent);
        QFile file(u":/icons/%1.svg"_s.arg(fileName(symbol)));
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
