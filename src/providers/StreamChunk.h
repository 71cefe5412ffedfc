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
class StreamChunk {
public:
    StreamChunk() : m_memory(m_buffer.data(), m_buffer.size()) {}
    StreamChunk(const StreamChunk &) = delete;
    StreamChunk &operator=(const StreamChunk &) = delete;

    /// What follows "data: " at the beginning of a line; nothing for comments, event names and all else.
    static std::optional<QByteArrayView> payload(QByteArrayView line);

    /// The object of a payload, valid until the next call; null if it is no JSON or no object.
    const boost::json::object *parse(QByteArrayView payload);

    /// Throws AIServiceError::Api if the chunk has an object `error`, with its `message` or else `unknown`.
    static void throwIfError(const boost::json::object &chunk, const QString &unknown);

    /// The array under a key if all of its elements are objects; null otherwise.
    static const boost::json::array *objects(const boost::json::object &object, std::string_view key);

private:
    std::array<unsigned char, 16 * 1024> m_buffer;
    boost::json::monotonic_resource m_memory;
    std::optional<boost::json::value> m_value;
};

} // namespace morvane
