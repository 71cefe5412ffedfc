#include "support/AccessibleTree.h"

#include <QDBusArgument>
#include <QDBusPendingCall>
#include <QDBusVariant>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

const auto accessible = u"org.a11y.atspi.Accessible"_s;

using Level = QList<AccessibleNode *>;

struct Questions {
    QDBusPendingCall name;
    QDBusPendingCall role;
    QDBusPendingCall children;
};

Questions askAbout(const AccessibleElement &element)
{
    AccessibilityBus &bus = element.bus();
    return {bus.ask(element, u"org.freedesktop.DBus.Properties"_s, u"Get"_s, {accessible, u"Name"_s}),
            bus.ask(element, accessible, u"GetRole"_s), bus.ask(element, accessible, u"GetChildren"_s)};
}

void markAsGone(AccessibleNode &node)
{
    node.states = uint64_t(1) << uint32_t(AccessibleState::defunct);
}

bool isGone(const AccessibleNode &node)
{
    return node.has(AccessibleState::defunct);
}

/// What the parents' children are, without those that are gone or not asked for: a third of a window is
/// hidden, of which nothing else needs to be known.
Level childrenOf(const Level &parents, AccessibilityBus &bus, TreePart part)
{
    QList<QDBusPendingCall> answers;
    for (const AccessibleNode *parent : parents)
        for (const AccessibleNode &child : parent->children)
            answers.append(bus.ask(child.element, accessible, u"GetState"_s));
    auto answer = answers.cbegin();
    Level level;
    for (AccessibleNode *parent : parents) {
        for (AccessibleNode &child : parent->children) {
            try {
                const auto words = qdbus_cast<QList<uint>>(bus.answer(*answer).value(0));
                child.states = words.value(0) | uint64_t(words.value(1)) << 32;
            } catch (const AccessibilityError &) {
                markAsGone(child);
            }
            ++answer;
        }
        parent->children.removeIf([part](const AccessibleNode &child) {
            return isGone(child) || (part == TreePart::visible && !child.has(AccessibleState::visible));
        });
        for (AccessibleNode &child : parent->children)
            level.append(&child);
    }
    return level;
}

void readLevel(const Level &level, AccessibilityBus &bus)
{
    QList<Questions> questions;
    for (const AccessibleNode *node : level)
        questions.append(askAbout(node->element));
    for (qsizetype i = 0; i < level.size(); ++i) {
        AccessibleNode &node = *level.at(i);
        const Questions &asked = questions.at(i);
        try {
            node.name = bus.answer(asked.name).value(0).value<QDBusVariant>().variant().toString();
            node.role = AccessibleRole(bus.answer(asked.role).value(0).toUInt());
            for (const AccessibleElement &child : readReferences(bus, bus.answer(asked.children).value(0)))
                if (!child.path().endsWith("/null"_L1))
                    node.children.append({.element = child});
        } catch (const AccessibilityError &) {
            markAsGone(node);
        }
    }
}

void leaveOutWhatIsGone(AccessibleNode &node)
{
    node.children.removeIf(isGone);
    for (AccessibleNode &child : node.children)
        leaveOutWhatIsGone(child);
}

QString roleName(AccessibleRole role)
{
    switch (role) {
    case AccessibleRole::application:
        return u"application"_s;
    case AccessibleRole::checkBox:
        return u"check box"_s;
    case AccessibleRole::comboBox:
        return u"combo box"_s;
    case AccessibleRole::dialog:
        return u"dialog"_s;
    case AccessibleRole::entry:
    case AccessibleRole::text:
        return u"text"_s;
    case AccessibleRole::frame:
        return u"window"_s;
    case AccessibleRole::label:
        return u"label"_s;
    case AccessibleRole::list:
        return u"list"_s;
    case AccessibleRole::listItem:
        return u"list item"_s;
    case AccessibleRole::menuItem:
        return u"menu item"_s;
    case AccessibleRole::pushButton:
        return u"button"_s;
    case AccessibleRole::statusBar:
        return u"status bar"_s;
    default:
        return u"role %1"_s.arg(uint32_t(role));
    }
}

void describe(const AccessibleNode &node, qsizetype depth, QString &lines)
{
    lines += QString(depth * 2, u' ') + roleName(node.role) + u" \""_s + node.name + u'"';
    const std::pair<AccessibleState, QLatin1String> told[] = {
        {AccessibleState::focused, " focused"_L1},
        {AccessibleState::modal, " modal"_L1},
        {AccessibleState::checked, " checked"_L1},
    };
    for (const auto &[state, word] : told)
        lines += node.has(state) ? word : QLatin1String();
    lines += node.has(AccessibleState::enabled) ? QLatin1String() : " disabled"_L1;
    lines += node.has(AccessibleState::showing) ? "\n"_L1 : " hidden\n"_L1;
    for (const AccessibleNode &child : node.children)
        describe(child, depth + 1, lines);
}

} // namespace

void AccessibleNode::visit(const std::function<void(const AccessibleNode &)> &visitor) const
{
    visitor(*this);
    for (const AccessibleNode &child : children)
        child.visit(visitor);
}

std::optional<AccessibleNode>
AccessibleNode::first(const std::function<bool(const AccessibleNode &)> &wanted) const
{
    if (wanted(*this))
        return *this;
    for (const AccessibleNode &child : children)
        if (auto found = child.first(wanted))
            return found;
    return std::nullopt;
}

QString AccessibleNode::description() const
{
    QString lines;
    describe(*this, 0, lines);
    return lines;
}

AccessibleNode readTree(const AccessibleElement &root, TreePart part)
{
    AccessibilityBus &bus = root.bus();
    AccessibleNode above{.children = {{.element = root}}};
    for (Level level = childrenOf({&above}, bus, part); !level.isEmpty();
         level = childrenOf(level, bus, part))
        readLevel(level, bus);
    leaveOutWhatIsGone(above);
    if (above.children.isEmpty())
        throw AccessibilityError(u"the program has no accessible tree"_s);
    return above.children.first();
}

} // namespace morvane
