#pragma once

#include <QString>
#include <QStringList>

namespace morvane {

/// The accessibility protocol's number for a field that shows dots.
inline constexpr uint32_t passwordRole = 40;

/// The name by which the tools know a role of the accessibility protocol. Toolkits call roles differently,
/// but agree on their numbers.
QString accessibleRoleName(uint32_t role, bool isMultiLine);

/// Which of an element's actions stands for a click; -1 if none does.
int clickAction(const QStringList &actions, uint32_t role);

} // namespace morvane
