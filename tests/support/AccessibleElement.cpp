#include "support/AccessibleElement.h"

#include "support/AccessibilityBus.h"

#include <QDBusArgument>
#include <QDBusVariant>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

const auto accessible = u"org.a11y.atspi.Accessible"_s;
const auto action = u"org.a11y.atspi.Action"_s;
const auto textInterface = u"org.a11y.atspi.Text"_s;

QVariant property(const AccessibleElement &element, const QString &name,
                  const QString &interface = accessible)
{
    const auto call =
        element.bus().ask(element, u"org.freedesktop.DBus.Properties"_s, u"Get"_s, {interface, name});
    return element.bus().answer(call).value(0).value<QDBusVariant>().variant();
}

QVariantList ask(const AccessibleElement &element, const QString &interface, const QString &method,
                 const QVariantList &arguments = {})
{
    return element.bus().answer(element.bus().ask(element, interface, method, arguments));
}

void edit(const AccessibleElement &element, const QString &method, const QVariantList &arguments)
{
    if (!ask(element, u"org.a11y.atspi.EditableText"_s, method, arguments).value(0).toBool())
        throw AccessibilityError(u"the text cannot be changed"_s);
}

} // namespace

AccessibleElement::AccessibleElement(AccessibilityBus &bus, QString service, QString path)
    : m_bus(&bus), m_service(std::move(service)), m_path(std::move(path))
{
}

bool AccessibleElement::operator==(const AccessibleElement &other) const
{
    return m_service == other.m_service && m_path == other.m_path;
}

QString AccessibleElement::name() const
{
    return property(*this, u"Name"_s).toString();
}

QString AccessibleElement::description() const
{
    return property(*this, u"Description"_s).toString();
}

AccessibleRole AccessibleElement::role() const
{
    return AccessibleRole(ask(*this, accessible, u"GetRole"_s).value(0).toUInt());
}

bool AccessibleElement::has(AccessibleState state) const
{
    const auto words = qdbus_cast<QList<uint>>(ask(*this, accessible, u"GetState"_s).value(0));
    const auto number = uint32_t(state);
    return (words.value(number / 32) >> (number % 32) & 1) != 0;
}

QList<AccessibleElement> AccessibleElement::children() const
{
    return readReferences(*m_bus, ask(*this, accessible, u"GetChildren"_s).value(0));
}

QString AccessibleElement::text() const
{
    return ask(*this, textInterface, u"GetText"_s, {0, -1}).value(0).toString();
}

int AccessibleElement::caret() const
{
    return property(*this, u"CaretOffset"_s, textInterface).toInt();
}

QString AccessibleElement::selectedText() const
{
    const QVariantList range = ask(*this, textInterface, u"GetSelection"_s, {0});
    return ask(*this, textInterface, u"GetText"_s, {range.value(0).toInt(), range.value(1).toInt()})
        .value(0)
        .toString();
}

void AccessibleElement::setText(const QString &text) const
{
    edit(*this, u"SetTextContents"_s, {text});
}

void AccessibleElement::insertText(int at, const QString &text) const
{
    edit(*this, u"InsertText"_s, {at, text, static_cast<int>(text.size())});
}

void AccessibleElement::pasteText(int at) const
{
    edit(*this, u"PasteText"_s, {at});
}

QStringList AccessibleElement::actions() const
{
    QStringList names;
    const auto answer = ask(*this, action, u"GetActions"_s);
    const auto list = answer.value(0).value<QDBusArgument>();
    list.beginArray();
    while (!list.atEnd()) {
        QString name;
        QString description;
        QString keys;
        list.beginStructure();
        list >> name >> description >> keys;
        list.endStructure();
        names.append(name);
    }
    list.endArray();
    return names;
}

void AccessibleElement::act(const QString &name) const
{
    const QStringList names = actions();
    const qsizetype index = names.indexOf(name);
    if (index < 0)
        throw AccessibilityError(u"no action \"%1\" among: %2"_s.arg(name, names.join(u", ")));
    ask(*this, action, u"DoAction"_s, {int(index)});
}

void AccessibleElement::press() const
{
    act(u"Press"_s);
}

void AccessibleElement::takeFocus() const
{
    const auto component = u"org.a11y.atspi.Component"_s;
    if (!ask(*this, component, u"GrabFocus"_s).value(0).toBool())
        throw AccessibilityError(u"the focus is not taken"_s);
}

} // namespace morvane
