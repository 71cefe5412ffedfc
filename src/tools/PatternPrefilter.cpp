#include "tools/PatternPrefilter.h"

#include "tools/PatternTranslator.h"

#include <algorithm>
#include <re2/re2.h>

namespace morvane {
namespace {

bool isAscii(QByteArrayView bytes)
{
    // In blocks, so that the compiler can look at many bytes at once.
    constexpr qsizetype block = 4096;
    for (qsizetype start = 0; start < bytes.size(); start += block) {
        unsigned char seen = 0;
        for (const char byte : bytes.sliced(start, std::min(block, bytes.size() - start)))
            seen |= static_cast<unsigned char>(byte);
        if (seen > 0x7f)
            return false;
    }
    return true;
}

} // namespace

PatternPrefilter::PatternPrefilter(QStringView pattern)
{
    PatternTranslator translator(pattern);
    const auto translated = translator.translate();
    if (!translated)
        return;
    re2::RE2::Options options;
    options.set_case_sensitive(!translator.ignoresCase());
    options.set_never_capture(true);
    options.set_log_errors(false);
    auto regex = std::make_shared<const re2::RE2>(*translated, options);
    if (regex->ok())
        m_regex = std::move(regex);
}

bool PatternPrefilter::mayMatch(QByteArrayView text) const
{
    if (!m_regex)
        return true;
    // The translation holds for other texts only where case matters.
    if (!m_regex->options().case_sensitive() && !isAscii(text))
        return true;
    return re2::RE2::PartialMatch({text.data(), static_cast<std::size_t>(text.size())}, *m_regex);
}

} // namespace morvane
