#pragma once

#include <QString>
#include <optional>

namespace morvane {

// Keys by the names that the model uses. The codes are virtual key codes of a US keyboard; the desktop's own
// are found from them. Any thread.

inline constexpr quint32 commandFlag = 0x100000;
inline constexpr quint32 controlFlag = 0x40000;
inline constexpr quint32 shiftFlag = 0x20000;
inline constexpr quint32 optionFlag = 0x80000;
inline constexpr quint32 functionFlag = 0x800000;

/// The code of a key by its name ("return", "a", "7"), in lower case.
std::optional<int> keyCode(const QString &name);

/// The flag of a modifier by its name ("cmd", "shift"), in lower case.
std::optional<quint32> modifierFlag(const QString &name);

} // namespace morvane
