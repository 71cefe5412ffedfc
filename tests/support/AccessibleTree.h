#pragma once

#include "support/AccessibilityBus.h"
#include "support/AccessibleElement.h"

#include <QList>
#include <QString>
#include <functional>
#include <optional>

namespace morvane {

/// What a program's accessibility tree was when it was read.
struct AccessibleNode {
    AccessibleElement element = {};
    QString name = {};
    AccessibleRole role = AccessibleRole::invalid;
    uint64_t states = 0;
    QList<AccessibleNode> children = {};

    bool has(AccessibleState state) const { return (states >> uint32_t(state) & 1) != 0; }

    /// The node and everything below it, in the order in which a reader meets it.
    void visit(const std::function<void(const AccessibleNode &)> &visitor) const;
    std::optional<AccessibleNode> first(const std::function<bool(const AccessibleNode &)> &wanted) const;
    /// One indented line for each object, for people.
    QString description() const;
};

/// How much of a tree is read: most of it is hidden most of the time.
enum class TreePart {
    visible, ///< Without what is hidden, and what is below that.
    whole
};

/// Reads the tree from `root` down, level by level with all questions of a level under way at once. What
/// disappears meanwhile is left out. Throws AccessibilityError when nothing is left.
AccessibleNode readTree(const AccessibleElement &root, TreePart part = TreePart::visible);

} // namespace morvane
