#include "attachments/StopFlag.h"

#include <cerrno>
#include <cstdint>
#include <poll.h>
#include <sys/eventfd.h>
#include <system_error>

namespace morvane {

StopFlag::StopFlag() : m_event(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (!m_event.isOpen())
        throw std::system_error(errno, std::generic_category());
}

void StopFlag::raise()
{
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(m_event.get(), &one, sizeof one);
}

bool StopFlag::isRaised() const
{
    pollfd event{m_event.get(), POLLIN, 0};
    return ::poll(&event, 1, 0) > 0;
}

} // namespace morvane
