#include "support/AccessibleElement.h"

#include "support/AccessibilityBus.h"

#include <QDBusArgument>
#include <QDBusVariant>

namespace morvane {

namespace {

const auto accessible = QStringLiteral("org.a11y.atspi.Accessible");
const auto action = QStringLiteral("org.a11y.atspi.Action");
const auto textInterface = QStringLiteral("org.a11y.atspi.Text");

QVariant property(const AccessibleElement &element, const QString &name)
{
    const auto call = element.bus().ask(element, QStringLiteral("org.freedesktop.DBus.Properties"),
                                        QStringLiteral("Get"), {accessible, name});
    return element.bus().answer(call).value(0).value<QDBusVariant>().variant();
}

QVariantList ask(const AccessibleElement &element, const QString &interface, const QString &method,
                 const QVariantList &arguments = {})
{
    return element.bus().answer(element.bus().ask(element, interface, method, arguments));
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
    return property(*this, QStringLiteral("Name")).toString();
}

QString AccessibleElement::description() const
{
    return property(*this, QStringLiteral("Description")).toString();
}

AccessibleRole AccessibleElement::role() const
{
    return AccessibleRole(ask(*this, accessible, QStringLiteral("GetRole")).value(0).toUInt());
}

bool AccessibleElement::has(AccessibleState state) const
{
    const auto words = qdbus_cast<QList<uint>>(ask(*this, accessible, QStringLiteral("GetState")).value(0));
    const auto number = uint32_t(state);
    return (words.value(number / 32) >> (number % 32) & 1) != 0;
}

QList<AccessibleElement> AccessibleElement::children() const
{
    return readReferences(*m_bus, ask(*this, accessible, QStringLiteral("GetChildren")).value(0));
}

QString AccessibleElement::text() const
{
    return ask(*this, textInterface, QStringLiteral("GetText"), {0, -1}).value(0).toString();
}

void AccessibleElement::setText(const QString &text) const
{
    const auto result =
        ask(*this, QStringLiteral("org.a11y.atspi.EditableText"), QStringLiteral("SetTextContents"), {text});
    if (!result.value(0).toBool()) {
        throw AccessibilityError(QStringLiteral("the text cannot be set"));
    }
}

QStringList AccessibleElement::actions() const
{
    QStringList names;
    const auto answer = ask(*this, action, QStringLiteral("GetActions"));
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
    if (index < 0) {
        throw AccessibilityError(QStringLiteral("no action \"%1\" among: %2").arg(name, names.join(u", ")));
    }
    ask(*this, action, QStringLiteral("DoAction"), {int(index)});
}

void AccessibleElement::press() const
{
    act(QStringLiteral("Press"));
}

void AccessibleElement::takeFocus() const
{
    const auto component = QStringLiteral("org.a11y.atspi.Component");
    if (!ask(*this, component, QStringLiteral("GrabFocus")).value(0).toBool()) {
        throw AccessibilityError(QStringLiteral("the focus is not taken"));
    }
}

} // namespace morvane
