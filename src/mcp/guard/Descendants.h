#pragma once

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <sys/types.h>
#include <utility>
#include <vector>

namespace morvane {

/// The parent of a process; 0 if there is no such process.
inline pid_t parentOf(const char *process)
{
    char path[64];
    std::snprintf(path, sizeof path, "/proc/%.20s/stat", process);
    std::FILE *const file = std::fopen(path, "re");
    if (!file)
        return 0;
    char line[512];
    const std::size_t size = std::fread(line, 1, sizeof line - 1, file);
    std::fclose(file);
    line[size] = '\0';
    // The program's name, in parentheses, may hold anything.
    const char *const nameEnd = std::strrchr(line, ')');
    int parent = 0;
    return nameEnd && std::sscanf(nameEnd + 1, " %*c %d", &parent) == 1 ? parent : 0;
}

/// Every process that descends from `ancestor`, parents before their children.
inline std::vector<pid_t> descendants(pid_t ancestor)
{
    std::vector<std::pair<pid_t, pid_t>> processes; // with its parent
    if (DIR *const folder = ::opendir("/proc")) {
        while (const dirent *const entry = ::readdir(folder))
            if (std::isdigit(static_cast<unsigned char>(entry->d_name[0])))
                processes.emplace_back(std::atoi(entry->d_name), parentOf(entry->d_name));
        ::closedir(folder);
    }
    std::vector<pid_t> family{ancestor};
    for (std::size_t next = 0; next < family.size(); ++next) {
        for (const auto &[process, parent] : processes)
            if (parent == family[next])
                family.push_back(process);
    }
    family.erase(family.begin());
    return family;
}

} // namespace morvane
