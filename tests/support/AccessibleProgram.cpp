#include "support/AccessibleProgram.h"

#include "support/WaitUntil.h"

#include <QDeadlineTimer>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr std::chrono::seconds patience{20};
constexpr std::chrono::milliseconds longestRest{100};
constexpr std::chrono::milliseconds longestBurst{100};
constexpr std::chrono::milliseconds lull{10};

AccessibleProgram::Condition named(const QString &name)
{
    return [name](const AccessibleNode &node) { return node.name == name; };
}

} // namespace

QProcessEnvironment environmentWithHome(const PrivateDesktop &desktop, const QString &home,
                                        const QProcessEnvironment &additions)
{
    QProcessEnvironment environment = desktop.environment();
    environment.insert(u"HOME"_s, home);
    for (const auto &[variable, folder] :
         {std::pair("XDG_CONFIG_HOME", "/.config"), std::pair("XDG_DATA_HOME", "/.local/share"),
          std::pair("XDG_STATE_HOME", "/.local/state"), std::pair("XDG_CACHE_HOME", "/.cache")}) {
        environment.insert(QString::fromLatin1(variable), home + QString::fromLatin1(folder));
    }
    environment.insert(additions);
    return environment;
}

AccessibleProgram::AccessibleProgram(const PrivateDesktop &desktop, AccessibilityBus &bus,
                                     const QString &program, const QString &home, const QString &logPath,
                                     const QProcessEnvironment &additions)
    : m_bus(bus), m_process(std::make_unique<TestProgram>(
                      program, QStringList(), environmentWithHome(desktop, home, additions), logPath))
{
    try {
        m_root = bus.application(m_process->pid());
    } catch (const AccessibilityError &error) {
        throw AccessibilityError(QString::fromUtf8(error.what()) + u"; its log:\n"_s + m_process->log());
    }
}

AccessibleProgram::AccessibleProgram(AccessibilityBus &bus, qint64 pid)
    : m_bus(bus), m_root(bus.application(pid))
{
}

AccessibleNode AccessibleProgram::tree(TreePart part) const
{
    return readTree(m_root, part);
}

AccessibleElement AccessibleProgram::find(const QString &name, AccessibleRole role) const
{
    const auto condition = [matches = named(name), role](const AccessibleNode &node) {
        return matches(node) && (role == AccessibleRole::invalid || node.role == role);
    };
    return find(condition, u"named \"%1\""_s.arg(name));
}

AccessibleElement AccessibleProgram::find(const Condition &wanted, const QString &what) const
{
    if (const auto node = waitForNode(wanted))
        return node->element;
    throw AccessibilityError(u"nothing %1 in\n%2"_s.arg(what, tree().description()));
}

bool AccessibleProgram::shows(const QString &name) const
{
    return waitForNode(named(name)).has_value();
}

bool AccessibleProgram::shows(const Condition &wanted) const
{
    return waitForNode(wanted).has_value();
}

bool AccessibleProgram::hides(const QString &name) const
{
    return waitForTree([&](const AccessibleNode &whole) { return !whole.first(named(name)); });
}

bool AccessibleProgram::focuses(const QString &name) const
{
    return waitForNode([&](const AccessibleNode &node) {
               return node.name == name && node.has(AccessibleState::focused);
           })
        .has_value();
}

std::optional<AccessibleNode> AccessibleProgram::focused() const
{
    std::optional<AccessibleNode> innermost;
    tree().visit([&](const AccessibleNode &node) {
        // The toolkit's viewports share the focus state of their field; readers pass over fillers.
        if (node.has(AccessibleState::focused) && node.role != AccessibleRole::filler)
            innermost = node;
    });
    return innermost;
}

std::optional<AccessibleNode> AccessibleProgram::waitForNode(const Condition &wanted) const
{
    std::optional<AccessibleNode> found;
    waitForTree([&](const AccessibleNode &whole) {
        found = whole.first(wanted);
        return found.has_value();
    });
    return found;
}

bool AccessibleProgram::waitForTree(const Condition &treeIsRight) const
{
    return becomes([&] {
        try {
            return treeIsRight(tree());
        } catch (const AccessibilityError &) {
            return false; // whoever puts its tree on the bus just now answers the next time
        }
    });
}

bool AccessibleProgram::becomes(const std::function<bool()> &condition) const
{
    const QDeadlineTimer deadline(patience);
    bool eventCame = false;
    const QObject listener; // ends with its place, however that is left
    QObject::connect(&m_bus, &AccessibilityBus::eventReceived, &listener, [&eventCame] { eventCame = true; });
    bool holds = condition();
    while (!holds && !deadline.hasExpired()) {
        const auto hears = [&eventCame] { return std::exchange(eventCame, false); };
        waitUntil(hears, longestRest);
        // What changes at once is told in many events, and each look at the tree is hundreds of questions.
        for (const QDeadlineTimer burst(longestBurst); !burst.hasExpired() && waitUntil(hears, lull);)
            continue;
        holds = condition();
    }
    return holds;
}

} // namespace morvane
