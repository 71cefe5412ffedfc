#pragma once

#include "support/AccessibleTree.h"
#include "support/PrivateDesktop.h"
#include "support/TestProgram.h"

#include <functional>
#include <memory>

namespace morvane {

/// A running program, driven as a blind user's screen reader drives it: by the names and roles of its
/// controls. What is asked for is waited for, with a limit; a search that fails throws AccessibilityError
/// with the tree as it was.
class AccessibleProgram {
public:
    using Condition = std::function<bool(const AccessibleNode &)>;

    /// Starts `program` on `desktop` with `home` as its home folder and `additions` to its environment, and
    /// waits for its tree. `bus` must outlive the object.
    AccessibleProgram(const PrivateDesktop &desktop, AccessibilityBus &bus, const QString &program,
                      const QString &home, const QString &logPath,
                      const QProcessEnvironment &additions = QProcessEnvironment());
    /// A program that was started by another, and lives as long as it wants.
    AccessibleProgram(AccessibilityBus &bus, qint64 pid);

    /// Only of a program that was started here.
    TestProgram &process() { return *m_process; }
    AccessibleNode tree(TreePart part = TreePart::visible) const;

    /// The first object that is not hidden and has this name, and this role if one is given. It may lie
    /// outside of what is scrolled into sight.
    AccessibleElement find(const QString &name, AccessibleRole role = AccessibleRole::invalid) const;
    /// The first object that is not hidden and fulfils `wanted`; `what` is for the error.
    AccessibleElement find(const Condition &wanted, const QString &what) const;

    /// Whether such an object is there, now or soon.
    bool shows(const QString &name) const;
    bool shows(const Condition &wanted) const;
    /// Whether no such object is there, now or soon.
    bool hides(const QString &name) const;
    /// Whether the object of this name has the focus, now or soon.
    bool focuses(const QString &name) const;

    /// Whether the condition holds, now or soon: looks again after every burst of events of the program, and
    /// at least every fifth of a second.
    bool becomes(const std::function<bool()> &condition) const;

    /// The object that has the focus, if any has: the innermost, where a container and its part both say so.
    std::optional<AccessibleNode> focused() const;

private:
    std::optional<AccessibleNode> waitForNode(const Condition &wanted) const;
    bool waitForTree(const Condition &treeIsRight) const;

    AccessibilityBus &m_bus;
    std::unique_ptr<TestProgram> m_process; ///< Null where another started it.
    AccessibleElement m_root;
};

/// The environment of a program whose home is `home` on `desktop`, with `additions`.
QProcessEnvironment environmentWithHome(const PrivateDesktop &desktop, const QString &home,
                                        const QProcessEnvironment &additions = QProcessEnvironment());

} // namespace morvane
