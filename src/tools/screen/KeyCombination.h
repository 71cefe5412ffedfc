#pragma once

#include <QString>
#include <expected>

namespace morvane {

class LayoutKeycodes;

/// A key and the modifiers that are held with it, as in tools/screen/KeyTable.h.
struct KeyCombination {
    int code = 0;
    quint32 flags = 0;

    bool operator==(const KeyCombination &) const = default;
};

/// Reads "command+shift+4", or tells the model what is wrong with it. Any thread.
std::expected<KeyCombination, QString> parseKeyCombination(const QString &key, const LayoutKeycodes &layout);

} // namespace morvane
