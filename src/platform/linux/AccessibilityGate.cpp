#include "platform/linux/AccessibilityGate.h"

#include "platform/AssistiveCommands.h"
#include "platform/linux/ScreenReaderWatch.h"

#include <QDBusMessage>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

const auto folder = u"/org/a11y/atspi/accessible"_s;
constexpr auto editing = "org.a11y.atspi.EditableText"_L1;

/// Whether it asks for a change. What merely moves the focus, a caret or the view is none.
bool isChange(const QDBusMessage &message)
{
    const QString interface = message.interface();
    const QString member = message.member();
    if (interface == "org.freedesktop.DBus.Properties"_L1)
        return member == "Set"_L1;
    if (interface == editing)
        return member != "CopyText"_L1;
    if (interface == "org.a11y.atspi.Selection"_L1)
        return !member.startsWith("Get"_L1) && !member.startsWith("Is"_L1);
    return (interface == "org.a11y.atspi.Action"_L1 && member == "DoAction"_L1) ||
           (interface == "org.a11y.atspi.Value"_L1 && member.startsWith("Set"_L1)) ||
           (interface == "org.a11y.atspi.Table"_L1 && member.endsWith("Selection"_L1));
}

QAccessibleInterface *elementAt(const QString &path)
{
    bool isNumber = false;
    const QAccessible::Id id = path.sliced(path.lastIndexOf(u'/') + 1).toUInt(&isNumber);
    QAccessibleInterface *element = isNumber ? QAccessible::accessibleInterface(id) : nullptr;
    return element != nullptr && element->isValid() ? element : nullptr;
}

bool isEditable(QAccessibleInterface &element)
{
    const QAccessible::State state = element.state();
    return element.textInterface() != nullptr && state.editable && !state.readOnly;
}

} // namespace

AccessibilityGate::AccessibilityGate(AssistiveCommands &commands) : m_commands(commands)
{
    QAccessible::installActivationObserver(this);
    if (QAccessible::isActive())
        close();
}

AccessibilityGate::~AccessibilityGate()
{
    QAccessible::removeActivationObserver(this);
    if (!m_toolkit)
        return;
    QDBusConnection bus = ScreenReaderWatch::bus();
    bus.unregisterObject(folder);
    bus.registerVirtualObject(folder, m_toolkit, QDBusConnection::SubPath);
}

void AccessibilityGate::accessibilityActiveChanged(bool active)
{
    // The toolkit takes its place on the bus right after it has told of this.
    if (active)
        QMetaObject::invokeMethod(this, &AccessibilityGate::close, Qt::QueuedConnection);
}

void AccessibilityGate::close()
{
    QDBusConnection bus = ScreenReaderWatch::bus();
    auto *const there = qobject_cast<QDBusVirtualObject *>(bus.objectRegisteredAt(folder));
    if (there == nullptr || there == this)
        return;
    m_toolkit = there;
    bus.unregisterObject(folder);
    bus.registerVirtualObject(folder, this, QDBusConnection::SubPath);
}

QString AccessibilityGate::introspect(const QString &path) const
{
    return m_toolkit ? m_toolkit->introspect(path) : QString();
}

bool AccessibilityGate::handleMessage(const QDBusMessage &message, const QDBusConnection &connection)
{
    if (!m_toolkit)
        return false;
    QAccessibleInterface *const element = isChange(message) ? elementAt(message.path()) : nullptr;
    if (element == nullptr)
        return m_toolkit->handleMessage(message, connection);
    const bool isReadOnly =
        message.interface() == editing && !isEditable(*element); // which the toolkit forgets
    if (isReadOnly || !m_commands.mayChange(*element)) {
        connection.send(message.interface() == "org.freedesktop.DBus.Properties"_L1
                            ? message.createErrorReply(QDBusError::AccessDenied, u"Not now."_s)
                            : message.createReply(false));
        return true;
    }
    if (!take(*element, message))
        return m_toolkit->handleMessage(message, connection);
    connection.send(message.createReply(true));
    return true;
}

bool AccessibilityGate::take(QAccessibleInterface &element, const QDBusMessage &message)
{
    if (message.interface() != editing)
        return false;
    const QString member = message.member();
    const QVariantList arguments = message.arguments();
    if (member == "SetTextContents"_L1 && message.signature() == "s"_L1)
        return m_commands.replaceText(element, 0, element.textInterface()->characterCount(),
                                      arguments.at(0).toString());
    if (member == "InsertText"_L1 && message.signature() == "isi"_L1) {
        const int at = arguments.at(0).toInt();
        const QString text = arguments.at(1).toString();
        return m_commands.replaceText(element, at, at, text.left(arguments.at(2).toInt()));
    }
    if (member == "PasteText"_L1 && message.signature() == "i"_L1)
        return m_commands.pasteText(element, arguments.at(0).toInt());
    return false;
}

} // namespace morvane
