#pragma once

#include <QFont>
#include <QHash>
#include <QRect>
#include <QSize>
#include <QString>
#include <QStringList>

class QPainter;

namespace morvane {

/// The lines of a text at one width.
struct WrappedLines {
    QStringList texts;
    int width = 0; ///< Of the longest.
    bool isCut = false;
};

/// A text laid out over as many lines as its width asks for, at most `maximumLines`; the last of these is
/// elided when there is more. Line feeds break lines. Each width is laid out once.
struct WrappedText {
    QString text;
    QFont font;
    int maximumLines = 1;
    /// In usual letters (see layoutCost): what goes beyond is never laid out, whatever the lines have room
    /// for.
    qsizetype costliest = 1'000;
    mutable QHash<int, WrappedLines> known = {}; ///< What is laid out, by width.

    /// The size taken when `width` logical pixels are to be had; not wider than that.
    QSize size(int width) const;
    /// The width that a single line would take.
    int naturalWidth() const;
    /// Whether something is cut off at `width`.
    bool isElided(int width) const;
    /// Draws into `rect`, centred vertically, in the painter's pen; lines lie at the left or in the middle.
    void draw(QPainter &painter, const QRect &rect, Qt::Alignment alignment) const;

    /// Whether it shows the same.
    bool operator==(const WrappedText &other) const
    {
        return maximumLines == other.maximumLines && costliest == other.costliest && text == other.text &&
               font == other.font;
    }

private:
    const WrappedLines &lines(int width) const;
};

} // namespace morvane
