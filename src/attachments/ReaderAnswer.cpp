#include "attachments/ReaderAnswer.h"

#include "attachments/PicturePixels.h"

#include <QtEndian>

namespace morvane {
namespace {

constexpr QByteArrayView mark("MAR", 3);
constexpr qsizetype headerBytes = 8;

bool isJpeg(const QByteArray &payload)
{
    return payload.startsWith("\xFF\xD8\xFF") && payload.endsWith("\xFF\xD9");
}

/// Whether an answer of this kind can carry such a payload.
bool fits(const ReaderAnswer &answer)
{
    switch (answer.kind) {
    case ReaderAnswer::Kind::unchanged:
    case ReaderAnswer::Kind::unreadable:
    case ReaderAnswer::Kind::tooManyPixels:
    case ReaderAnswer::Kind::unprotected:
        return answer.payload.isEmpty();
    case ReaderAnswer::Kind::jpeg:
        return isJpeg(answer.payload);
    case ReaderAnswer::Kind::pixels:
        return !pixelImage(answer.payload).isNull();
    case ReaderAnswer::Kind::text:
        return answer.payload.isValidUtf8();
    }
    return false;
}

} // namespace

QByteArray ReaderAnswer::serialized() const
{
    char length[4];
    qToLittleEndian(static_cast<quint32>(payload.size()), length);
    QByteArray bytes;
    bytes.reserve(headerBytes + payload.size());
    bytes.append(mark).append(static_cast<char>(kind)).append(length, sizeof length).append(payload);
    return bytes;
}

std::optional<ReaderAnswer> ReaderAnswer::parse(QByteArrayView bytes)
{
    if (bytes.size() < headerBytes || !bytes.startsWith(mark))
        return std::nullopt;
    const auto length = qFromLittleEndian<quint32>(bytes.data() + mark.size() + 1);
    if (bytes.size() - headerBytes != static_cast<qsizetype>(length))
        return std::nullopt;
    ReaderAnswer answer{static_cast<Kind>(bytes.at(mark.size())), bytes.sliced(headerBytes).toByteArray()};
    if (!fits(answer))
        return std::nullopt;
    return answer;
}

} // namespace morvane
