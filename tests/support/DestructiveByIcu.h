#pragma once

#include "base/Regex.h"
#include "tools/DestructiveCommands.h"

#include <optional>
#include <vector>

namespace morvane {

/// What ICU itself, pattern by pattern, says of a command; nothing where it gives up. For short commands: its
/// time grows without bound.
inline std::optional<bool> destructiveByIcu(const QString &command)
{
    static const std::vector<Regex> patterns = [] {
        std::vector<Regex> list;
        for (const QStringView pattern : destructivePatterns())
            list.push_back(Regex::compile(pattern).value());
        return list;
    }();
    const QString lowered = command.toLower();
    for (const Regex &pattern : patterns) {
        const auto found = pattern.contains(lowered, std::chrono::seconds(10));
        if (!found)
            return std::nullopt;
        if (*found)
            return true;
    }
    return false;
}

} // namespace morvane
