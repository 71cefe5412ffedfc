#include "base/VisibleText.h"

#include <QChar>
#include <algorithm>
#include <unicode/uchar.h>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr char32_t brailleBlank = 0x2800;         // A symbol by its category, drawn as an empty cell.
constexpr char32_t musicalNullNotehead = 0x1D159; // The same.

/// More blanks than this reach from a line's end into nothing, and what follows them out of sight.
constexpr qsizetype longestBlankRun = 32;

bool isHidden(char32_t character)
{
    if (character < 0x7F)
        return character < 0x20 && character != U'\n';
    if (character == brailleBlank || character == musicalNullNotehead)
        return true;
    const auto point = static_cast<UChar32>(character);
    // Fillers, joiners, variation selectors and tags, whatever their category.
    if (u_hasBinaryProperty(point, UCHAR_DEFAULT_IGNORABLE_CODE_POINT))
        return true;
    switch (u_charType(point)) {
    case U_CONTROL_CHAR:
    case U_FORMAT_CHAR:
    case U_SURROGATE:
    case U_SPACE_SEPARATOR:
    case U_LINE_SEPARATOR:
    case U_PARAGRAPH_SEPARATOR:
        return true;
    case U_UNASSIGNED:
        return (character & 0xFFFE) == 0xFFFE || (character >= 0xFDD0 && character <= 0xFDEF);
    default:
        return false;
    }
}

/// The blanks at the beginning of `text`.
qsizetype blanksAt(QStringView text)
{
    const auto end = std::find_if(text.begin(), text.end(), [](QChar unit) { return unit != u' '; });
    return end - text.begin();
}

QString escape(char32_t character)
{
    if (character == U'\t')
        return u"\\t"_s;
    if (character == U'\r')
        return u"\\r"_s;
    const QString digits = QString::number(static_cast<uint>(character), 16).toUpper();
    if (QChar::requiresSurrogates(character))
        return u"\\U"_s + digits.rightJustified(8, u'0');
    return u"\\u"_s + digits.rightJustified(4, u'0');
}

} // namespace

VisibleText visibleText(QStringView text)
{
    VisibleText result;
    result.text.reserve(text.size());
    for (qsizetype at = 0; at < text.size();) {
        char32_t character = text[at].unicode();
        qsizetype length = 1;
        if (text[at].isHighSurrogate() && at + 1 < text.size() && text[at + 1].isLowSurrogate()) {
            character = QChar::surrogateToUcs4(text[at], text[at + 1]);
            length = 2;
        }
        QString escaped;
        if (const qsizetype blanks = blanksAt(text.sliced(at)); blanks > longestBlankRun) {
            escaped = u"[%1 blanks]"_s.arg(blanks);
            length = blanks;
        } else if (blanks > 0) {
            length = blanks;
        } else if (isHidden(character)) {
            escaped = escape(character);
        }
        if (!escaped.isEmpty()) {
            result.escapes.append({result.text.size(), escaped.size()});
            result.text.append(escaped);
        } else {
            result.text.append(text.sliced(at, length));
        }
        at += length;
    }
    return result;
}

} // namespace morvane
