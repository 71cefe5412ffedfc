#include "ui/conversation/ConversationStyle.h"

#include <QFontDatabase>
#include <QFontMetricsF>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr double textScale = 1.08;
constexpr double captionScale = 0.9;
constexpr int lineLengthLimit = 92;

QFont scaled(QFont font, double factor)
{
    if (font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() * factor);
    else
        font.setPixelSize(qRound(font.pixelSize() * factor));
    return font;
}

} // namespace

int ConversationStyle::gapAbove(TextSegment::Joint joint) const
{
    switch (joint) {
    case TextSegment::Joint::line:
        return 0;
    case TextSegment::Joint::item:
        return segmentGap / 3;
    case TextSegment::Joint::block:
        return segmentGap;
    case TextSegment::Joint::heading:
        return segmentGap * 3 / 2;
    }
    Q_UNREACHABLE();
}

ConversationStyle::ConversationStyle(const QFont &usual, const QPalette &palette, int zoom)
    : colors(ThemeColors::fromPalette(palette))
{
    const QFont base = scaled(usual, zoom / 100.0);
    font = scaled(base, textScale);
    captionFont = scaled(base, captionScale);
    codeFont = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    if (font.pointSizeF() > 0)
        codeFont.setPointSizeF(base.pointSizeF());
    else
        codeFont.setPixelSize(base.pixelSize());

    const QFontMetricsF metrics(font);
    lineHeight = qCeil(metrics.lineSpacing());
    captionLineHeight = qCeil(QFontMetricsF(captionFont).lineSpacing());
    averageCharacter = metrics.averageCharWidth();
    codeCharacter = QFontMetricsF(codeFont).horizontalAdvance(u'0');

    const int unit = qMax(8, lineHeight / 2);
    margin = unit * 2;
    columnLimit = qRound(averageCharacter * lineLengthLimit);
    rowGap = unit * 2;
    endGap = unit;
    markSize = qRound(lineHeight * 1.6);
    markGap = unit + unit / 2;
    bubblePadding = unit + unit / 4;
    segmentGap = unit + unit / 4;
    codePadding = unit + unit / 2;
    codeHeaderHeight = captionLineHeight + unit * 2;
    symbolSize = qMax(symbolSize, qRound(captionLineHeight * 0.9));
    indentWidth = qRound(averageCharacter * 3.4);
    timeWidth = qCeil(QFontMetricsF(captionFont).horizontalAdvance(u"00:00 PM "_s));
}

} // namespace morvane
