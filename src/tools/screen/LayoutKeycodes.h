#pragma once

#include <QHash>
#include <QString>
#include <mutex>
#include <optional>

namespace morvane {

class InputEvents;

/// Which key types a character in the user's keyboard layout. Any thread.
class LayoutKeycodes {
public:
    /// Asks the desktop for the layout, once and for good; a layout that is not known stays unknown. May
    /// block for milliseconds.
    void warm(InputEvents &input);

    /// The virtual key code of the key that types `character`, or the one of a US keyboard if the layout has
    /// no such key or has not been asked for; nothing if there is neither. Capitals are the small letter's
    /// key.
    std::optional<int> keyCodeFor(const QString &character) const;

private:
    mutable std::mutex m_layoutLock;
    bool m_isWarm = false;
    QHash<QString, int> m_layoutKeycodes;
};

} // namespace morvane
