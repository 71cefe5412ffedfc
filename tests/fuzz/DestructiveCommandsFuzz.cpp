#include "support/DestructiveByIcu.h"

#include <cstdlib>

/// Commands as UTF-8 and, since ICU reads halves of characters too, as UTF-16: the answer is ICU's.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    using namespace morvane;
    constexpr std::size_t longest = 2'000;
    if (size > longest)
        return 0;
    const auto check = [](const QString &command) {
        const std::optional<bool> expected = destructiveByIcu(command);
        if (expected && *expected != isDestructiveCommand(command))
            std::abort();
    };
    check(QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size)));
    QString units;
    for (std::size_t at = 0; at + 1 < size; at += 2)
        units += QChar(static_cast<char16_t>(data[at] | data[at + 1] << 8));
    check(units);
    return 0;
}
