#pragma once

#include "tools/screen/AXElementInfo.h"

#include <QList>
#include <mutex>
#include <optional>

namespace morvane {

/// The clickable elements that the model was told of last. Any thread.
class ScreenInventory {
public:
    void replace(QList<AXElementInfo> elements)
    {
        const std::lock_guard lock(m_inventoryLock);
        m_lastInventory = std::move(elements);
    }

    /// The element with the number that the model knows, which begins at 1.
    std::optional<AXElementInfo> element(qint64 number) const
    {
        const std::lock_guard lock(m_inventoryLock);
        if (number < 1 || number > m_lastInventory.size())
            return std::nullopt;
        return m_lastInventory.at(number - 1);
    }

private:
    mutable std::mutex m_inventoryLock;
    QList<AXElementInfo> m_lastInventory;
};

} // namespace morvane
