#include "platform/linux/desktop/ElementFacts.h"

#include "base/Text.h"
#include "platform/linux/desktop/AccessibleRoles.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <limits>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// Of a name or a description; what is longer is no label.
constexpr qsizetype labelLimit = 500;
/// Of a field's content; the tools show less.
constexpr int textLimit = 200;
/// How far from the screen a place may be told; more is no place.
constexpr int farthest = 100'000;

const auto accessibleInterface = u"org.a11y.atspi.Accessible"_s;
const auto componentInterface = u"org.a11y.atspi.Component"_s;
const auto actionInterface = u"org.a11y.atspi.Action"_s;
const auto textInterface = u"org.a11y.atspi.Text"_s;

bool isArgument(const QVariant &value, QLatin1String signature)
{
    return value.userType() == qMetaTypeId<QDBusArgument>() &&
           value.value<QDBusArgument>().currentSignature() == signature;
}

std::optional<QRectF> rectangleOf(const AccessibilityAnswer &answer)
{
    const QVariant value = answer.values.value(0);
    if (!isArgument(value, "(iiii)"_L1))
        return std::nullopt;
    const auto argument = value.value<QDBusArgument>();
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    argument.beginStructure();
    argument >> x >> y >> width >> height;
    argument.endStructure();
    const auto isFar = [](int coordinate) { return coordinate < -farthest || coordinate > farthest; };
    if (isFar(x) || isFar(y) || isFar(width) || isFar(height) || width < 0 || height < 0)
        return std::nullopt;
    return QRectF(x, y, width, height);
}

QStringList actionsOf(const AccessibilityAnswer &answer)
{
    QStringList names;
    const QVariant value = answer.values.value(0);
    if (!isArgument(value, "a(sss)"_L1))
        return names;
    const auto argument = value.value<QDBusArgument>();
    argument.beginArray();
    while (!argument.atEnd()) {
        QString name;
        QString description;
        QString keys;
        argument.beginStructure();
        argument >> name >> description >> keys;
        argument.endStructure();
        names.append(name);
    }
    argument.endArray();
    return names;
}

QString label(const AccessibilityAnswer &answer)
{
    return firstCharacters(propertyOf(answer).toString(), labelLimit);
}

/// Which of the questions of the second round belong to an element.
struct Round {
    qsizetype first = 0;
    bool asksActions = false;
    bool asksText = false;
};

/// What only holds others: it is no control and its name is not shown.
bool isContainer(const ElementFacts &facts, const QStringList &interfaces)
{
    return !interfaces.contains(actionInterface) && !interfaces.contains(textInterface) &&
           facts.childCount > 0;
}

} // namespace

QList<ElementFacts> readFacts(AccessibilityConnection &bus, const QList<AccessibilityReference> &elements,
                              const QList<bool> &fromWindow, QDeadlineTimer deadline)
{
    constexpr int questions = 4;
    QList<AccessibilityCall> calls;
    for (const AccessibilityReference &element : elements) {
        const auto method = [&element](const QString &name) {
            return AccessibilityCall{element.service, element.path, accessibleInterface, name};
        };
        calls << method(u"GetRole"_s) << method(u"GetState"_s) << method(u"GetInterfaces"_s)
              << propertyCall(element, accessibleInterface, u"ChildCount"_s);
    }
    const auto answers = bus.ask(calls, deadline);

    QList<ElementFacts> facts(elements.size());
    QList<Round> rounds(elements.size());
    calls.clear();
    for (qsizetype at = 0; at < elements.size(); ++at) {
        ElementFacts &fact = facts[at];
        fact.role = answers.at(at * questions).values.value(0).toUInt();
        fact.states = qdbus_cast<QList<uint>>(answers.at(at * questions + 1).values.value(0));
        const auto interfaces = answers.at(at * questions + 2).values.value(0).toStringList();
        fact.childCount = propertyOf(answers.at(at * questions + 3)).toInt();
        const AccessibilityReference &element = elements.at(at);
        Round &round = rounds[at];
        round.first = calls.size();
        calls.append({element.service,
                      element.path,
                      componentInterface,
                      u"GetExtents"_s,
                      {QVariant::fromValue(uint(fromWindow.at(at)))}});
        calls.append(propertyCall(element, accessibleInterface, u"Name"_s));
        if (isContainer(fact, interfaces))
            continue;
        calls.append(propertyCall(element, accessibleInterface, u"Description"_s));
        round.asksActions = interfaces.contains(actionInterface);
        if (round.asksActions)
            calls.append({element.service, element.path, actionInterface, u"GetActions"_s});
        // Some toolkits tell what is in a field that shows dots.
        round.asksText = interfaces.contains(textInterface) && fact.role != passwordRole;
        if (round.asksText)
            calls.append({element.service, element.path, textInterface, u"GetText"_s, {0, textLimit}});
    }
    const auto details = bus.ask(calls, deadline);
    for (qsizetype at = 0; at < elements.size(); ++at) {
        ElementFacts &fact = facts[at];
        const Round &round = rounds.at(at);
        const qsizetype end = at + 1 < rounds.size() ? rounds.at(at + 1).first : details.size();
        qsizetype next = round.first;
        fact.extents = rectangleOf(details.at(next++));
        fact.name = label(details.at(next++));
        if (next < end)
            fact.description = label(details.at(next++));
        if (round.asksActions)
            fact.actions = actionsOf(details.at(next++));
        if (round.asksText)
            fact.text = details.at(next++).values.value(0).toString();
    }
    return facts;
}

std::optional<AccessibilityReference> referenceOf(const AccessibilityAnswer &answer)
{
    const QVariant value = answer.values.value(0);
    if (!isArgument(value, "(so)"_L1))
        return std::nullopt;
    AccessibilityReference reference;
    QDBusObjectPath path;
    const auto argument = value.value<QDBusArgument>();
    argument.beginStructure();
    argument >> reference.service >> path;
    argument.endStructure();
    reference.path = path.path();
    return reference;
}

} // namespace morvane
