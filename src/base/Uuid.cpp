#include "base/Uuid.h"

#include <cctype>

namespace morvane {

QUuid newUuid()
{
    return QUuid::createUuid();
}

QString uuidText(QUuid uuid)
{
    return uuid.toString(QUuid::WithoutBraces).toUpper();
}

std::optional<QUuid> uuidFromText(QStringView text)
{
    constexpr qsizetype length = 36;
    if (text.size() != length)
        return std::nullopt;
    for (qsizetype i = 0; i < length; ++i) {
        const char16_t unit = text[i].unicode();
        const bool hyphen = i == 8 || i == 13 || i == 18 || i == 23;
        if (hyphen ? unit != u'-' : unit > 0x7f || !std::isxdigit(static_cast<unsigned char>(unit)))
            return std::nullopt;
    }
    return QUuid::fromString(text);
}

} // namespace morvane
