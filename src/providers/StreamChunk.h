#pragma once

#include <QByteArrayView>
#include <QString>
#include <array>
#include <boost/json/monotonic_resource.hpp>
#include <boost/json/value.hpp>
#include <optional>

namespace morvane {

/// The JSON object in one line of server-sent events. Its memory is used again for the next line, so that a
/// line of usual size allocates nothing.
///
/// A line may be no UTF-8 or hold the escape of a surrogate without its partner, since some servers cut their
/// texts anywhere. It is read all the same: its texts then keep those bytes, and a surrogate as the three
/// that it would have in UTF-8, for StreamText to put together.
class StreamChunk {
public:
    StreamChunk() = default;
    StreamChunk(const StreamChunk &) = delete;
    StreamChunk &operator=(const StreamChunk &) = delete;

    /// What follows "data: " at the beginning of a line; nothing for comments, event names and all else.
    static std::optional<QByteArrayView> payload(QByteArrayView line);

    /// The object of a payload, valid until the next call; null if it is no JSON or no object.
    const boost::json::object *parse(QByteArrayView payload);

    /// Whether texts of the chunk may hold what is no UTF-8.
    bool hasBrokenText() const { return m_hasBrokenText; }

    /// Throws AIServiceError::Api if the chunk has an object `error`, with its `message` or else `unknown`.
    static void throwIfError(const boost::json::object &chunk, const QString &unknown);

    /// The array under a key if all of its elements are objects; null otherwise.
    static const boost::json::array *objects(const boost::json::object &object, std::string_view key);

private:
    std::array<unsigned char, 16 * 1024> m_buffer;
    std::optional<boost::json::monotonic_resource> m_memory;
    std::optional<boost::json::value> m_value; ///< Lies in m_memory.
    bool m_hasBrokenText = false;
};

} // namespace morvane
