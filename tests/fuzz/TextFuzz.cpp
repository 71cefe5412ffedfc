#include "base/Text.h"

#include <cstdlib>
#include <unicode/ubrk.h>

/// Counting with shortcuts gives what ICU counts over the whole text, and every cut lies on one of its
/// boundaries.
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
    for (int32_t end = ubrk_next(boundaries); end != UBRK_DONE; end = ubrk_next(boundaries))
        if (characterOffset(text, ++count) != end)
            std::abort();
    ubrk_close(boundaries);
    if (characterCount(text) != count)
        std::abort();

    const QString line = flattened(text, 10);
    if (characterCount(line) > 11 || line.contains(u'\n') || line.contains(u'\r'))
        std::abort();
    return 0;
}
