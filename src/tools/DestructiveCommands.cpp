#include "tools/DestructiveCommands.h"

#include "base/Regex.h"

#include <chrono>
#include <vector>

namespace morvane {
namespace {

/// For all patterns together; the user must not feel it when the main thread asks.
constexpr std::chrono::milliseconds timeLimit{20};

/// Searched in a lower-cased command, so "secureErase" and "zeroDisk" never match; they stay for the reader.
constexpr const char16_t *expressions[] = {
    uR"(\brm\s+[^\n]*-\w*[rf]\w*)",
    uR"(\brmdir\b)",
    uR"(\bmkfs\w*\b)",
    uR"(\bdd\b)",
    uR"(\bdiskutil\s+(erase|secureErase|zeroDisk|reformat)\b)",
    uR"(\bfdisk\b|\bgdisk\b|\bparted\b)",
    uR"(\bshutdown\b|\breboot\b|\bhalt\b|\bpoweroff\b)",
    uR"(\bkill\s+-s\s+9\b|\bkill\s+-\w*[Kk]\w*\b|\bkill\s+-\d+\b)",
    uR"(\bkillall\b|\bpkill\b)",
    uR"(\bsystemctl\b)",
    uR"(\bsudo\b)",
    uR"(\bgit\s+push\s+.*(--force|-f)\b)",
    uR"(\bchmod\s+-\w*[Rr]\w*|\bchown\s+-\w*[Rr]\w*|\bchmod\s+--recursive\b|\bchown\s+--recursive\b)",
    uR"((^|\s)>>?\s*/dev/(disk|rdisk))",
    uR"(\bfind\s+[^\n]*\s-delete\b)",
};

const std::vector<Regex> &patterns()
{
    static const std::vector<Regex> compiled = [] {
        std::vector<Regex> list;
        for (const char16_t *const expression : expressions)
            list.push_back(Regex::compile(expression).value());
        return list;
    }();
    return compiled;
}

} // namespace

bool isDestructiveCommand(const QString &command)
{
    const auto deadline = std::chrono::steady_clock::now() + timeLimit;
    const QString lowered = command.toLower();
    for (const Regex &pattern : patterns()) {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (pattern.contains(lowered, left).value_or(true))
            return true;
    }
    return false;
}

} // namespace morvane
