#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <cstdint>
#include <optional>

namespace morvane {

/// What the reader program has made of a file. On its way between the processes it is eight bytes of mark,
/// kind and length, then the payload, and nothing behind it.
struct ReaderAnswer {
    enum class Kind : std::uint8_t {
        unchanged = 'u',     ///< The picture is fit as it is. No payload.
        jpeg = 'j',          ///< The payload is the picture, made fit.
        pixels = 'b',        ///< The payload is the picture as it is looked at (PicturePixels.h).
        text = 't',          ///< The payload is UTF-8; may be empty.
        unreadable = 'x',    ///< The file is not what it should be. No payload.
        tooManyPixels = 'p', ///< The picture would take too much to decode. No payload.
        unprotected = 'n'    ///< Not looked at: the reader could not be kept apart from the user's files.
    };

    Kind kind = Kind::unreadable;
    QByteArray payload;

    bool operator==(const ReaderAnswer &) const = default;

    QByteArray serialized() const;

    /// Nothing if the bytes are anything else than one whole answer. The sender may have been taken over by
    /// the file that it read.
    static std::optional<ReaderAnswer> parse(QByteArrayView bytes);
};

} // namespace morvane
