#pragma once

#include <csignal>
#include <stdexcept>
#include <sys/resource.h>

namespace morvane {

/// Lets no file grow beyond a size as long as it lives, for this whole process: what a full disk does to a
/// write, and root is not exempt from it.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) : m_signalBefore(std::signal(SIGXFSZ, SIG_IGN))
    {
        if (::getrlimit(RLIMIT_FSIZE, &m_before) != 0)
            throw std::runtime_error("no file size limit");
        const rlimit limit{bytes, m_before.rlim_max};
        if (::setrlimit(RLIMIT_FSIZE, &limit) != 0)
            throw std::runtime_error("cannot set the file size limit");
    }
    ~FileSizeLimit()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_signalBefore);
    }
    FileSizeLimit(const FileSizeLimit &) = delete;
    FileSizeLimit &operator=(const FileSizeLimit &) = delete;

private:
    void (*m_signalBefore)(int);
    rlimit m_before{};
};

} // namespace morvane
