#include "tools/PatternPrefilter.h"

#include "base/Regex.h"

#include <cstdlib>

/// The first line is a pattern, the rest a text. What ICU matches is never ruled out.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    using namespace morvane;
    constexpr std::size_t longest = 300;
    if (size > longest)
        return 0;
    const QString input =
        QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const qsizetype lineEnd = input.indexOf(u'\n');
    const QStringView pattern = QStringView(input).first(lineEnd < 0 ? input.size() : lineEnd);
    const QStringView text = QStringView(input).sliced(lineEnd + 1);
    const auto regex = Regex::compile(pattern);
    if (!regex || PatternPrefilter(pattern).mayMatch(text.toUtf8()))
        return 0;
    if (regex->contains(text, std::chrono::milliseconds(50)).value_or(false))
        std::abort();
    return 0;
}
