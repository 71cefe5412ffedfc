#include "support/AccessibleTree.h"

#include <QDBusArgument>
#include <QDBusPendingCall>
#include <QDBusVariant>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

const auto accessible = u"org.a11y.atspi.Accessible"_s;

struct Questions {
    QDBusPendingCall name;
    QDBusPendingCall role;
    QDBusPendingCall states;
    QDBusPendingCall children;
};

Questions askAbout(const AccessibleElement &element)
{
    AccessibilityBus &bus = element.bus();
    return {bus.ask(element, u"org.freedesktop.DBus.Properties"_s, u"Get"_s, {accessible, u"Name"_s}),
            bus.ask(element, accessible, u"GetRole"_s), bus.ask(element, accessible, u"GetState"_s),
            bus.ask(element, accessible, u"GetChildren"_s)};
}

void readLevel(AccessibilityBus &bus, TreePart part, QList<AccessibleNode> &level)
{
    QList<Questions> questions;
    for (const AccessibleNode &node : level)
        questions.append(askAbout(node.element));
    QList<AccessibleNode> answered;
    for (qsizetype i = 0; i < level.size(); ++i) {
        AccessibleNode node = level.at(i);
        const Questions &asked = questions.at(i);
        try {
            node.name = bus.answer(asked.name).value(0).value<QDBusVariant>().variant().toString();
            node.role = AccessibleRole(bus.answer(asked.role).value(0).toUInt());
            const auto words = qdbus_cast<QList<uint>>(bus.answer(asked.states).value(0));
            node.states = words.value(0) | uint64_t(words.value(1)) << 32;
            if (part == TreePart::visible && !node.has(AccessibleState::visible)) {
                answered.append(node);
                continue;
            }
            for (const AccessibleElement &child : readReferences(bus, bus.answer(asked.children).value(0)))
                if (!child.path().endsWith("/null"_L1))
                    node.children.append({.element = child});
        } catch (const AccessibilityError &) {
            continue;
        }
        answered.append(node);
    }
    level = answered;
    for (AccessibleNode &node : level)
        readLevel(bus, part, node.children);
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
    QList<AccessibleNode> level{{.element = root}};
    readLevel(root.bus(), part, level);
    if (level.isEmpty())
        throw AccessibilityError(u"the program has no accessible tree"_s);
    return level.first();
}

} // namespace morvane
