#pragma once

#include <unistd.h>
#include <utility>

namespace morvane {

/// Owns an open file descriptor.
class FileDescriptor {
public:
    FileDescriptor() = default;

    /// Takes over what open() or the like answered; -1 is none.
    explicit FileDescriptor(int descriptor) : m_descriptor(descriptor) {}
    ~FileDescriptor() { close(); }
    FileDescriptor(FileDescriptor &&other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}
    FileDescriptor &operator=(FileDescriptor &&other) noexcept
    {
        std::swap(m_descriptor, other.m_descriptor);
        return *this;
    }

    bool isOpen() const { return m_descriptor >= 0; }
    int get() const { return m_descriptor; }

    /// Hands it over to another owner.
    int release() { return std::exchange(m_descriptor, -1); }

    /// Closes it; false if a delayed write failed (errno says why).
    bool close() { return m_descriptor < 0 || ::close(std::exchange(m_descriptor, -1)) == 0; }

private:
    int m_descriptor = -1;
};

} // namespace morvane
