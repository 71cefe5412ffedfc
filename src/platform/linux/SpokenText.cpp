#include "platform/linux/SpokenText.h"

#include <algorithm>
#include <memory>
#include <unicode/ubrk.h>

namespace morvane {

namespace {

QString speakable(QString text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar unit = text.at(i);
        const bool isPair = unit.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate();
        if (isPair)
            ++i;
        else if (unit.isSurrogate())
            text[i] = QChar::ReplacementCharacter;
        else if (unit.category() == QChar::Other_Control && unit != u'\n' && unit != u'\t')
            text[i] = u' ';
    }
    return text;
}

/// The last boundary of `text` up to `limit`; 0 or less if there is none above 0.
qsizetype lastBoundary(UBreakIteratorType type, QStringView text, qsizetype limit)
{
    UErrorCode status = U_ZERO_ERROR;
    const auto *units = reinterpret_cast<const UChar *>(text.utf16());
    const std::unique_ptr<UBreakIterator, decltype(&ubrk_close)> boundaries(
        ubrk_open(type, "", units, int32_t(text.size()), &status), &ubrk_close);
    return U_SUCCESS(status) ? ubrk_preceding(boundaries.get(), int32_t(limit) + 1) : 0;
}

/// Where the first piece of a text that is longer than `limit` ends.
qsizetype endOfPiece(QStringView text, qsizetype limit)
{
    // Whether a boundary lies at the limit itself shows in the character after it, which may be a pair.
    const QStringView window = text.first(std::min(limit + 2, text.size()));
    for (const auto type : {UBRK_SENTENCE, UBRK_WORD, UBRK_CHARACTER}) {
        const qsizetype end = lastBoundary(type, window, limit);
        if (end > 0)
            return end;
    }
    return limit;
}

} // namespace

QStringList spokenPieces(const QString &text, qsizetype limit)
{
    const QString spoken = speakable(text);
    QStringList pieces;
    QStringView rest = spoken;
    while (rest.size() > limit) {
        const qsizetype end = endOfPiece(rest, limit);
        pieces.append(rest.first(end).toString());
        rest = rest.sliced(end);
    }
    pieces.append(rest.toString());
    pieces.removeIf([](const QString &piece) { return QStringView(piece).trimmed().isEmpty(); });
    return pieces;
}

} // namespace morvane
