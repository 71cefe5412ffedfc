#include "archive/EntryPath.h"

#include <cstddef>

namespace morvane {

namespace {

/// Calls `take` with every name between slashes until it answers false.
template <class Take> bool eachName(std::string_view path, Take take)
{
    while (!path.empty()) {
        const std::size_t end = path.find('/');
        const std::string_view name = path.substr(0, end);
        path.remove_prefix(end == std::string_view::npos ? path.size() : end + 1);
        if (!name.empty() && name != "." && !take(name))
            return false;
    }
    return true;
}

} // namespace

std::optional<EntryPath> entryPath(std::string_view path)
{
    if (path.empty() || path.starts_with('/') || path.size() > longestEntryPath)
        return std::nullopt;
    EntryPath names;
    const bool goesDown = eachName(path, [&names](std::string_view name) {
        names.emplace_back(name);
        return name != "..";
    });
    if (!goesDown)
        return std::nullopt;
    return names;
}

bool staysInside(const EntryPath &link, std::string_view target)
{
    if (link.empty() || target.empty() || target.starts_with('/') || target.size() > longestEntryPath)
        return false;
    std::size_t depth = link.size() - 1;
    return eachName(target, [&depth](std::string_view name) {
        if (name != "..") {
            ++depth;
            return true;
        }
        if (depth == 0)
            return false;
        --depth;
        return true;
    });
}

} // namespace morvane
