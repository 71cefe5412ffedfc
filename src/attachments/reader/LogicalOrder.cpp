#include "attachments/reader/LogicalOrder.h"

#include <algorithm>
#include <memory>
#include <unicode/ubidi.h>

namespace morvane {
namespace {

struct Letters {
    qsizetype leftToRight = 0;
    qsizetype rightToLeft = 0;
};

Letters lettersOf(const QString &line)
{
    Letters letters;
    const auto count = [&letters](char32_t character) {
        switch (QChar::direction(character)) {
        case QChar::DirL:
            ++letters.leftToRight;
            break;
        case QChar::DirR:
        case QChar::DirAL:
            ++letters.rightToLeft;
            break;
        default:
            break;
        }
    };
    for (const uint character : line.toUcs4())
        count(character);
    return letters;
}

/// The other way round what the algorithm for showing text does. The line unchanged if that fails.
QString inverted(const QString &line, UBiDiLevel direction)
{
    const std::unique_ptr<UBiDi, decltype(&ubidi_close)> bidi(ubidi_open(), &ubidi_close);
    UErrorCode status = U_ZERO_ERROR;
    ubidi_setReorderingMode(bidi.get(), UBIDI_REORDER_INVERSE_LIKE_DIRECT);
    const auto *units = reinterpret_cast<const UChar *>(line.utf16());
    ubidi_setPara(bidi.get(), units, static_cast<int32_t>(line.size()), direction, nullptr, &status);
    QString logical(line.size(), Qt::Uninitialized);
    const int32_t length = ubidi_writeReordered(bidi.get(), reinterpret_cast<UChar *>(logical.data()),
                                                static_cast<int32_t>(logical.size()),
                                                UBIDI_DO_MIRRORING | UBIDI_KEEP_BASE_COMBINING, &status);
    if (U_FAILURE(status) || length > logical.size())
        return line;
    logical.truncate(length);
    return logical;
}

/// Forms of letters at the beginning, in the middle and at the end of words, and joined ones.
bool isArabicForm(QChar character)
{
    return (character >= u'\uFB50' && character <= u'\uFDFF') ||
           (character >= u'\uFE70' && character <= u'\uFEFC');
}

QString withoutArabicForms(const QString &line)
{
    if (std::none_of(line.begin(), line.end(), &isArabicForm))
        return line;
    QString letters;
    for (const QChar character : line)
        letters += isArabicForm(character) ? QString(character).normalized(QString::NormalizationForm_KC)
                                           : QString(character);
    return letters;
}

} // namespace

QStringList inLogicalOrder(const QStringList &visualLines)
{
    Letters ofPage;
    for (const QString &line : visualLines) {
        const Letters letters = lettersOf(line);
        ofPage.leftToRight += letters.leftToRight;
        ofPage.rightToLeft += letters.rightToLeft;
    }
    if (ofPage.rightToLeft == 0)
        return visualLines;
    QStringList lines;
    for (const QString &line : visualLines) {
        const Letters letters = lettersOf(line);
        // Where both stand in one line, the page tells in which of them it is written.
        const bool isRightToLeft = letters.leftToRight == 0 || ofPage.rightToLeft >= ofPage.leftToRight;
        lines.append(letters.rightToLeft == 0
                         ? line
                         : withoutArabicForms(inverted(line, isRightToLeft ? UBIDI_RTL : UBIDI_LTR)));
    }
    return lines;
}

} // namespace morvane
