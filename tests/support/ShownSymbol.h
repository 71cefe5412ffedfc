#pragma once

#include "ui/theme/Icons.h"

#include <QImage>
#include <QList>
#include <QPixmap>
#include <QWidget>
#include <algorithm>
#include <cstdlib>
#include <tuple>

namespace morvane {

/// Whether a picture shows a symbol in a colour, `side` pixels large, in any place. Where the symbol is clear
/// the picture must have one colour.
inline bool showsSymbol(const QImage &picture, Symbol symbol, const QColor &color, int side)
{
    const QImage shape =
        symbolPixmap(symbol, side, color, 1).toImage().convertToFormat(QImage::Format_ARGB32);
    const QImage shown = picture.convertToFormat(QImage::Format_RGB32);
    // Those that tell most come first; clear ones last, of which the last is the ground.
    QList<QPoint> places;
    for (int y = 0; y < shape.height(); ++y)
        for (int x = 0; x < shape.width(); ++x)
            places.append({x, y});
    std::sort(places.begin(), places.end(), [&shape](const QPoint &one, const QPoint &other) {
        return std::tuple(-qAlpha(shape.pixel(one)), one.y(), one.x()) <
               std::tuple(-qAlpha(shape.pixel(other)), other.y(), other.x());
    });
    const auto isNear = [](int one, int other) { return std::abs(one - other) <= 6; };
    const auto standsAt = [&](const QPoint &corner) {
        const QRgb ground = shown.pixel(corner + places.constLast());
        return std::all_of(places.begin(), places.end(), [&](const QPoint &place) {
            const QRgb pixel = shown.pixel(corner + place);
            const int alpha = qAlpha(shape.pixel(place));
            const auto mixed = [alpha](int above, int below) {
                return (above * alpha + below * (255 - alpha)) / 255;
            };
            return isNear(qRed(pixel), mixed(color.red(), qRed(ground))) &&
                   isNear(qGreen(pixel), mixed(color.green(), qGreen(ground))) &&
                   isNear(qBlue(pixel), mixed(color.blue(), qBlue(ground)));
        });
    };
    for (int top = 0; top + shape.height() <= shown.height(); ++top)
        for (int left = 0; left + shape.width() <= shown.width(); ++left)
            if (standsAt({left, top}))
                return true;
    return false;
}

inline bool showsSymbol(QWidget &widget, Symbol symbol, const QColor &color, int side)
{
    return showsSymbol(widget.grab().toImage(), symbol, color, side);
}

} // namespace morvane
