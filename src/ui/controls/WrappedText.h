#pragma once

#include <QFont>
#include <QRect>
#include <QSize>
#include <QString>

class QPainter;

namespace morvane {

/// A text laid out over as many lines as its width asks for, at most `maximumLines`; the last of these is
/// elided when there is more. Line feeds break lines.
struct WrappedText {
    QString text;
    QFont font;
    int maximumLines = 1;
    /// In usual letters (see layoutCost): what goes beyond is never laid out, whatever the lines have room
    /// for.
    qsizetype costliest = 1'000;

    /// The size taken when `width` logical pixels are to be had; not wider than that.
    QSize size(int width) const;
    /// The width that a single line would take.
    int naturalWidth() const;
    /// Whether something is cut off at `width`.
    bool isElided(int width) const;
    /// Draws into `rect`, centred vertically, in the painter's pen; lines lie at the left or in the middle.
    void draw(QPainter &painter, const QRect &rect, Qt::Alignment alignment) const;
};

} // namespace morvane
