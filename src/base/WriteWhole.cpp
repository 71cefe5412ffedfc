#include "base/WriteWhole.h"

#include <cerrno>
#include <unistd.h>

namespace morvane {

bool writeWhole(int descriptor, QByteArrayView bytes)
{
    while (!bytes.isEmpty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), static_cast<std::size_t>(bytes.size()));
        if (written >= 0)
            bytes = bytes.sliced(written);
        else if (errno != EINTR)
            return false;
    }
    return true;
}

} // namespace morvane
