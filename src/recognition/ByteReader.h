#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <type_traits>
#include <vector>

namespace morvane {

/// Takes numbers and texts off the front of bytes. What is not there reads as zero, and is remembered.
class ByteReader {
public:
    explicit ByteReader(std::span<const char> bytes) : m_bytes(bytes) {}

    /// Whether there was all that has been asked for.
    bool isGood() const { return m_isGood; }
    /// Says that what was read makes no sense.
    void fail() { m_isGood = false; }

    /// A number as this processor has them in memory.
    template <class Number> Number number()
    {
        static_assert(std::is_arithmetic_v<Number>);
        Number value{};
        const std::span<const char> taken = take(sizeof value);
        if (!taken.empty())
            std::memcpy(&value, taken.data(), sizeof value);
        return value;
    }

    template <class Number> std::vector<Number> numbers(std::size_t count)
    {
        std::vector<Number> values;
        const std::span<const char> taken =
            take(count <= m_bytes.size() ? count * sizeof(Number) : m_bytes.size() + 1);
        values.resize(taken.size() / sizeof(Number));
        if (!taken.empty())
            std::memcpy(values.data(), taken.data(), taken.size());
        return values;
    }

    /// A text with its length in front.
    std::string text()
    {
        const std::span<const char> taken = take(number<uint32_t>());
        return {taken.begin(), taken.end()};
    }

private:
    std::span<const char> take(std::size_t count)
    {
        if (!m_isGood || count > m_bytes.size()) {
            m_isGood = false;
            return {};
        }
        const std::span<const char> taken = m_bytes.first(count);
        m_bytes = m_bytes.subspan(count);
        return taken;
    }

    std::span<const char> m_bytes;
    bool m_isGood = true;
};

} // namespace morvane
