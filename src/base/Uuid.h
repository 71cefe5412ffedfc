#pragma once

#include <QString>
#include <QStringView>
#include <QUuid>
#include <optional>

namespace morvane {

/// A new random identifier.
QUuid newUuid();

/// The stored form of an identifier: upper-case hexadecimal digits, 8-4-4-4-12, no braces.
QString uuidText(QUuid uuid);

/// The identifier with this text, in upper or lower case; nothing for any other form.
std::optional<QUuid> uuidFromText(QStringView text);

} // namespace morvane
