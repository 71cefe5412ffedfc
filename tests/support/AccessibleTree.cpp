#include "support/AccessibleTree.h"

#include <QDBusArgument>
#include <QDBusPendingCall>
#include <QDBusVariant>
#include <algorithm>

namespace morvane {

namespace {

const auto accessible = QStringLiteral("org.a11y.atspi.Accessible");

struct Questions {
    QDBusPendingCall name;
    QDBusPendingCall role;
    QDBusPendingCall states;
    QDBusPendingCall children;
};

Questions askAbout(const AccessibleElement &element)
{
    AccessibilityBus &bus = element.bus();
    return {bus.ask(element, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"),
                    {accessible, QStringLiteral("Name")}),
            bus.ask(element, accessible, QStringLiteral("GetRole")),
            bus.ask(element, accessible, QStringLiteral("GetState")),
            bus.ask(element, accessible, QStringLiteral("GetChildren"))};
}

void readLevel(AccessibilityBus &bus, QList<AccessibleNode> &level)
{
    QList<Questions> questions;
    for (const AccessibleNode &node : level) {
        questions.append(askAbout(node.element));
    }
    QList<AccessibleNode> answered;
    for (qsizetype i = 0; i < level.size(); ++i) {
        AccessibleNode node = level.at(i);
        const Questions &asked = questions.at(i);
        try {
            node.name = bus.answer(asked.name).value(0).value<QDBusVariant>().variant().toString();
            node.role = AccessibleRole(bus.answer(asked.role).value(0).toUInt());
            const auto words = qdbus_cast<QList<uint>>(bus.answer(asked.states).value(0));
            node.states = words.value(0) | uint64_t(words.value(1)) << 32;
            for (const AccessibleElement &child : readReferences(bus, bus.answer(asked.children).value(0))) {
                if (!child.path().endsWith(QLatin1String("/null"))) {
                    node.children.append({.element = child});
                }
            }
        } catch (const AccessibilityError &) {
            continue;
        }
        answered.append(node);
    }
    level = answered;
    for (AccessibleNode &node : level) {
        readLevel(bus, node.children);
    }
}

QString roleName(AccessibleRole role)
{
    switch (role) {
    case AccessibleRole::application:
        return QStringLiteral("application");
    case AccessibleRole::checkBox:
        return QStringLiteral("check box");
    case AccessibleRole::comboBox:
        return QStringLiteral("combo box");
    case AccessibleRole::dialog:
        return QStringLiteral("dialog");
    case AccessibleRole::entry:
    case AccessibleRole::text:
        return QStringLiteral("text");
    case AccessibleRole::frame:
        return QStringLiteral("window");
    case AccessibleRole::label:
        return QStringLiteral("label");
    case AccessibleRole::list:
        return QStringLiteral("list");
    case AccessibleRole::listItem:
        return QStringLiteral("list item");
    case AccessibleRole::menuItem:
        return QStringLiteral("menu item");
    case AccessibleRole::pushButton:
        return QStringLiteral("button");
    case AccessibleRole::statusBar:
        return QStringLiteral("status bar");
    default:
        return QStringLiteral("role %1").arg(uint32_t(role));
    }
}

void describe(const AccessibleNode &node, qsizetype depth, QString &lines)
{
    lines += QString(depth * 2, u' ') + roleName(node.role) + QStringLiteral(" \"") + node.name + u'"';
    const std::pair<AccessibleState, QLatin1String> told[] = {
        {AccessibleState::focused, QLatin1String(" focused")},
        {AccessibleState::modal, QLatin1String(" modal")},
        {AccessibleState::checked, QLatin1String(" checked")},
    };
    for (const auto &[state, word] : told) {
        lines += node.has(state) ? word : QLatin1String();
    }
    lines += node.has(AccessibleState::enabled) ? QLatin1String() : QLatin1String(" disabled");
    lines += node.has(AccessibleState::showing) ? QLatin1String("\n") : QLatin1String(" hidden\n");
    for (const AccessibleNode &child : node.children) {
        describe(child, depth + 1, lines);
    }
}

} // namespace

void AccessibleNode::visit(const std::function<void(const AccessibleNode &)> &visitor) const
{
    visitor(*this);
    for (const AccessibleNode &child : children) {
        child.visit(visitor);
    }
}

std::optional<AccessibleNode>
AccessibleNode::first(const std::function<bool(const AccessibleNode &)> &wanted) const
{
    if (wanted(*this)) {
        return *this;
    }
    for (const AccessibleNode &child : children) {
        if (auto found = child.first(wanted)) {
            return found;
        }
    }
    return std::nullopt;
}

QString AccessibleNode::description() const
{
    QString lines;
    describe(*this, 0, lines);
    return lines;
}

AccessibleNode readTree(const AccessibleElement &root)
{
    QList<AccessibleNode> level{{.element = root}};
    readLevel(root.bus(), level);
    if (level.isEmpty()) {
        throw AccessibilityError(QStringLiteral("the program has no accessible tree"));
    }
    return level.first();
}

} // namespace morvane
