#include "base/Regex.h"

#include <cstdlib>

/// The first line is a pattern, the rest a text. No pattern crashes or hangs, and matches lie in the text.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    using namespace morvane;
    const QString input =
        QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const qsizetype lineEnd = input.indexOf(u'\n');
    const auto regex = Regex::compile(QStringView(input).first(lineEnd < 0 ? input.size() : lineEnd));
    if (!regex)
        return 0;
    const QStringView text = QStringView(input).sliced(lineEnd + 1);
    const auto matches = regex->findAll(text, 100, std::chrono::milliseconds(50));
    if (!matches)
        return 0;
    qsizetype last = 0;
    for (const RegexMatch &match : *matches) {
        if (match.start() < last || match.end() < match.start() || match.end() > text.size())
            std::abort();
        last = match.end();
        for (qsizetype group = 0; group <= match.groupCount(); ++group)
            static_cast<void>(match.captured(text, group).toString());
    }
    return 0;
}
