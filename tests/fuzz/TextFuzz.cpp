#include "base/Text.h"

#include <cstdlib>
#include <unicode/ubrk.h>

using namespace Qt::StringLiterals;

/// Counting with shortcuts gives what ICU counts over the whole text, every cut lies on one of its
/// boundaries or parts what is too long to be one character, and a line is made of the whole text or of its
/// beginning alike.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    using namespace morvane;
    const QString text =
        QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));

    UErrorCode status = U_ZERO_ERROR;
    UBreakIterator *const boundaries =
        ubrk_open(UBRK_CHARACTER, "", QStringView(text).utf16(), static_cast<int32_t>(text.size()), &status);
    if (U_FAILURE(status))
        std::abort();
    qsizetype count = 0;
    qsizetype at = 0;
    for (int32_t end = ubrk_next(boundaries); end != UBRK_DONE; end = ubrk_next(boundaries)) {
        while (at < end) {
            const bool splitsPair =
                text.at(qMin<qsizetype>(at + longestCharacterUnits, end) - 1).isHighSurrogate();
            at = end - at <= longestCharacterUnits ? end : at + longestCharacterUnits - (splitsPair ? 1 : 0);
            if (characterOffset(text, ++count) != at)
                std::abort();
        }
    }
    ubrk_close(boundaries);
    if (characterCount(text) != count)
        std::abort();

    QString line = text;
    line.replace(u"\r\n"_s, u" "_s);
    for (const char16_t lineEnd : {u'\n', u'\v', u'\f', u'\r', u'\u0085', u'\u2028', u'\u2029'})
        line.replace(QChar(lineEnd), u' ');
    line = line.trimmed();
    for (const qsizetype limit : {0, 1, 10}) {
        const QString expected = characterCount(line) > limit ? firstCharacters(line, limit) + u'…' : line;
        if (flattened(text, limit) != expected)
            std::abort();
    }
    return 0;
}
