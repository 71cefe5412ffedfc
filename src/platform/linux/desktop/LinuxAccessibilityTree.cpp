#include "platform/linux/desktop/LinuxAccessibilityTree.h"

#include "platform/linux/desktop/AccessibleRoles.h"
#include "platform/linux/desktop/ElementFacts.h"
#include "platform/linux/desktop/ScreenWindows.h"

#include <QDBusVariant>
#include <algorithm>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

constexpr std::chrono::milliseconds actionLimit{2000};
/// Of one element; a table of a million rows is not read whole.
constexpr qsizetype mostChildren = 1000;
constexpr int deepestHit = 16;

const AccessibilityReference registry{u"org.a11y.atspi.Registry"_s, u"/org/a11y/atspi/accessible/root"_s};
const auto accessibleInterface = u"org.a11y.atspi.Accessible"_s;
const auto componentInterface = u"org.a11y.atspi.Component"_s;
const auto actionInterface = u"org.a11y.atspi.Action"_s;
const auto editableInterface = u"org.a11y.atspi.EditableText"_s;

/// What the tools hold on to.
class BusElement final : public LiveElement {
public:
    AccessibilityReference reference;
    std::shared_ptr<const AccessibleWindow> window; ///< Null for a program.
    qint64 pid = 0;
    bool isGtk4 = false;
    uint32_t role = 0;
    int clickIndex = -1;
};

const BusElement &busElement(const ScreenElement &element)
{
    return static_cast<const BusElement &>(*element.element);
}

AccessibilityCall callOf(const AccessibilityReference &object, const QString &interface,
                         const QString &method, const QVariantList &arguments = {})
{
    return {object.service, object.path, interface, method, arguments};
}

/// The window of a program that is seen at a place: `inFront`, which is none where a menu covers it, or else
/// one that the window manager does not know, such as a menu.
const ScreenElement *windowAt(const QList<ScreenElement> &windows, QPointF place, xcb_window_t inFront)
{
    const ScreenElement *found = nullptr;
    for (const ScreenElement &one : windows) {
        const AccessibleWindow &window = *busElement(one).window;
        if (!window.frame.contains(place))
            continue;
        if (window.id != XCB_NONE && window.id == inFront)
            return &one;
        if (window.id == XCB_NONE && one.frame && !found)
            found = &one;
    }
    return found;
}

/// Whether who was told to act may have done so, without saying it.
bool mayHaveActed(const AccessibilityAnswer &answer)
{
    return answer.kind == AccessibilityAnswer::Kind::late || answer.kind == AccessibilityAnswer::Kind::ended;
}

std::optional<QString> present(const QString &text)
{
    return text.isEmpty() ? std::nullopt : std::optional(text);
}

} // namespace

std::optional<ScreenElement> LinuxAccessibilityTree::application(qint64 pid, QDeadlineTimer deadline)
{
    const auto programs = referencesOf(
        m_bus.ask(callOf(registry, accessibleInterface, u"GetChildren"_s), deadline), mostChildren);
    QList<AccessibilityCall> owners;
    for (const AccessibilityReference &program : programs)
        owners.append({u"org.freedesktop.DBus"_s,
                       u"/org/freedesktop/DBus"_s,
                       u"org.freedesktop.DBus"_s,
                       u"GetConnectionUnixProcessID"_s,
                       {program.service}});
    const auto answers = m_bus.ask(owners, deadline);
    for (qsizetype at = 0; at < programs.size(); ++at) {
        if (answers.at(at).values.value(0).toLongLong() != pid || pid <= 0)
            continue;
        const auto toolkit =
            m_bus.ask({propertyCall(programs.at(at), u"org.a11y.atspi.Application"_s, u"ToolkitName"_s),
                       propertyCall(programs.at(at), u"org.a11y.atspi.Application"_s, u"Version"_s)},
                      deadline);
        const auto live = std::make_shared<BusElement>();
        live->reference = programs.at(at);
        live->pid = pid;
        live->isGtk4 = propertyOf(toolkit.at(0)).toString() == "GTK"_L1 &&
                       propertyOf(toolkit.at(1)).toString().startsWith(u'4');
        ScreenElement root;
        root.role = u"AXApplication"_s;
        root.mayHaveChildren = true;
        root.element = live;
        return root;
    }
    return std::nullopt;
}

QList<QList<ScreenElement>> LinuxAccessibilityTree::children(const QList<ScreenElement> &parents,
                                                             QDeadlineTimer deadline,
                                                             const std::stop_token &stop)
{
    QList<AccessibilityCall> calls;
    for (const ScreenElement &parent : parents)
        calls.append(callOf(busElement(parent).reference, accessibleInterface, u"GetChildren"_s));
    const auto answers = m_bus.ask(calls, deadline);
    QList<Wanted> wanted;
    QList<qsizetype> sizes;
    for (qsizetype at = 0; at < parents.size(); ++at) {
        const BusElement &parent = busElement(parents.at(at));
        const auto references = referencesOf(answers.at(at), mostChildren);
        sizes.append(references.size());
        for (const AccessibilityReference &reference : references)
            wanted.append({reference, parent.window, parent.pid, parent.isGtk4});
    }
    const QList<ScreenElement> all = read(wanted, deadline, stop);
    QList<QList<ScreenElement>> families;
    qsizetype first = 0;
    for (const qsizetype size : std::as_const(sizes)) {
        families.append(all.mid(first, size));
        first += size;
    }
    return families;
}

QList<ScreenElement> LinuxAccessibilityTree::read(const QList<Wanted> &wanted, QDeadlineTimer deadline,
                                                  const std::stop_token &stop)
{
    QList<AccessibilityReference> references;
    for (const Wanted &one : wanted)
        references.append(one.reference);
    QList<bool> relative;
    for (const Wanted &one : wanted)
        relative.append(one.isGtk4);
    const QList<ElementFacts> facts = readFacts(m_bus, references, relative, deadline);
    const auto display = XDisplay::open(stop);
    const QPointF origin = display ? QPointF(display->origin()) : QPointF();
    std::optional<ScreenWindows> screen;
    if (std::any_of(wanted.begin(), wanted.end(), [](const Wanted &one) { return !one.window; }))
        screen.emplace(display.get());
    QList<ScreenElement> elements;
    for (qsizetype at = 0; at < wanted.size(); ++at) {
        const ElementFacts &fact = facts.at(at);
        const auto live = std::make_shared<BusElement>();
        live->reference = wanted.at(at).reference;
        live->pid = wanted.at(at).pid;
        live->isGtk4 = wanted.at(at).isGtk4;
        live->role = fact.role;
        const bool isWindow = !wanted.at(at).window;
        live->window =
            isWindow ? screen->find({live->pid, live->isGtk4, fact.name, fact.extents.value_or(QRectF()),
                                     fact.has(ElementFacts::activeState)})
                     : wanted.at(at).window;
        live->clickIndex = clickAction(fact.actions, fact.role);
        ScreenElement element;
        element.role =
            isWindow ? u"AXWindow"_s : accessibleRoleName(fact.role, fact.has(ElementFacts::multiLineState));
        element.pressable = !isWindow && live->clickIndex >= 0;
        element.title = present(fact.name);
        element.description = present(fact.description);
        element.value = present(fact.text);
        element.mayHaveChildren = fact.childCount != 0;
        const AccessibleWindow &window = *live->window;
        const bool isShown = !window.tellsShowing || fact.has(ElementFacts::showingState);
        if (isShown && fact.extents && window.isPlaced()) {
            const QRectF frame = window.toScreen(*fact.extents, origin);
            if (isWindow || window.frame.isEmpty() || window.frame.contains(frame.center()))
                element.frame = frame;
        }
        element.element = live;
        elements.append(element);
    }
    return elements;
}

std::optional<ScreenElement> LinuxAccessibilityTree::elementAt(QPointF point, const std::stop_token &stop)
{
    const QDeadlineTimer deadline(m_lookLimit);
    const auto display = XDisplay::open(stop);
    if (!display)
        return std::nullopt;
    const QPointF fromRoot = point + display->origin();
    if (!QRectF(0, 0, display->screen().width_in_pixels, display->screen().height_in_pixels)
             .contains(fromRoot))
        return std::nullopt;
    const QPoint place = fromRoot.toPoint();
    for (const XWindow &window : stackedWindows(*display)) {
        if (!window.isShown || !window.frame.contains(place))
            continue;
        const auto program = application(window.pid, deadline);
        if (!program)
            return std::nullopt;
        const BusElement &root = busElement(*program);
        const QList<ScreenElement> tops = children({*program}, deadline, stop).first();
        const xcb_window_t frame = withAncestors(*display, window.window).last();
        const ScreenElement *const top =
            windowAt(tops, point, childOfRootAt(*display, place) == frame ? window.window : XCB_NONE);
        if (!top)
            return std::nullopt;
        const BusElement &live = busElement(*top);
        const bool isRelative = live.window->isRelative;
        const QPointF inside =
            (isRelative ? point - live.window->offset : QPointF(place)) / live.window->scale;
        AccessibilityReference hit = live.reference;
        for (int depth = 0; depth < deepestHit; ++depth) {
            const auto answer =
                m_bus.ask(callOf(hit, componentInterface, u"GetAccessibleAtPoint"_s,
                                 {int(inside.x()), int(inside.y()), QVariant::fromValue(uint(isRelative))}),
                          deadline);
            const auto next = referenceOf(answer);
            if (!next || *next == hit || next->path.endsWith("/null"_L1))
                break;
            hit = *next;
        }
        if (hit == live.reference)
            return std::nullopt;
        return read({{hit, live.window, root.pid, root.isGtk4}}, deadline, stop).first();
    }
    return std::nullopt;
}

std::optional<ScreenElement> LinuxAccessibilityTree::current(const ScreenElement &element,
                                                             const std::stop_token &stop)
{
    const BusElement &known = busElement(element);
    const QDeadlineTimer deadline(actionLimit);
    // The window may have moved since.
    const auto program = application(known.pid, deadline);
    if (!program || busElement(*program).reference.service != known.reference.service)
        return std::nullopt;
    std::shared_ptr<const AccessibleWindow> window = known.window;
    if (known.window->isRelative && known.window->id != XCB_NONE) {
        window = nullptr;
        for (const ScreenElement &top : children({*program}, deadline, stop).first())
            if (busElement(top).window->id == known.window->id)
                window = busElement(top).window;
        if (!window)
            return std::nullopt;
    } else if (!known.window->isRelative) {
        auto moved = std::make_shared<AccessibleWindow>(*known.window);
        moved->frame = {};
        window = moved;
    }
    ScreenElement now = read({{known.reference, window, known.pid, known.isGtk4}}, deadline, stop).first();
    const BusElement &live = busElement(now);
    // Some toolkits describe a slider by its value.
    const bool isDescribed = now.role != "AXSlider"_L1 && now.role != "AXIncrementor"_L1;
    if (live.role != known.role || live.role == 0 || now.title != element.title ||
        (isDescribed && now.description != element.description))
        return std::nullopt;
    // Programs answer for what they have hidden or thrown away, and would do what its button says.
    if (!now.frame)
        return std::nullopt;
    return now;
}

bool LinuxAccessibilityTree::isCovered(const ScreenElement &element, const std::stop_token &stop)
{
    const xcb_window_t window = busElement(element).window->id;
    const auto display = XDisplay::open(stop);
    // Menus and the like lie above all others.
    if (!display || !element.frame || window == XCB_NONE)
        return false;
    const xcb_window_t onTop =
        childOfRootAt(*display, (element.frame->center() + display->origin()).toPoint());
    const auto own = withAncestors(*display, window);
    return own.isEmpty() || onTop != own.last();
}

bool LinuxAccessibilityTree::isOwn(const ScreenElement &element) const
{
    return busElement(element).pid == ::getpid();
}

std::optional<AccessibilityAnswer> LinuxAccessibilityTree::askToAct(const ScreenElement &element,
                                                                    const QString &interface,
                                                                    const QString &method,
                                                                    const QVariantList &arguments,
                                                                    const std::stop_token &stop)
{
    const BusElement &live = busElement(element);
    return m_carrier.tell(callOf(live.reference, interface, method, arguments), live.pid, actionLimit, stop);
}

AccessibilityTree::Outcome LinuxAccessibilityTree::outcomeUnsaid(const AccessibilityReference &object)
{
    // A button may open a dialog and answer when that is closed; a program that hangs answers nothing.
    const auto sign =
        m_bus.ask(callOf(object, accessibleInterface, u"GetRole"_s), QDeadlineTimer(m_lookLimit));
    return sign.kind == AccessibilityAnswer::Kind::answered ? Outcome::done : Outcome::gone;
}

AccessibilityTree::Outcome LinuxAccessibilityTree::press(const ScreenElement &element,
                                                         const std::stop_token &stop)
{
    const auto now = current(element, stop);
    if (!now)
        return Outcome::gone;
    const BusElement &live = busElement(*now);
    if (live.clickIndex < 0)
        return Outcome::refused;
    const auto answer = askToAct(*now, actionInterface, u"DoAction"_s, {live.clickIndex}, stop);
    if (!answer)
        return Outcome::stopped;
    if (answer->kind == AccessibilityAnswer::Kind::late)
        return outcomeUnsaid(live.reference);
    if (answer->kind == AccessibilityAnswer::Kind::ended)
        return Outcome::done;
    return answer->values.value(0).toBool() ? Outcome::done : Outcome::refused;
}

AccessibilityTree::Outcome LinuxAccessibilityTree::setValue(const ScreenElement &element, const QString &text,
                                                            const std::stop_token &stop)
{
    const auto now = current(element, stop);
    if (!now)
        return Outcome::gone;
    const auto set = askToAct(*now, editableInterface, u"SetTextContents"_s, {text}, stop);
    if (!set)
        return Outcome::stopped;
    if (set->kind == AccessibilityAnswer::Kind::answered && set->values.value(0).toBool())
        return Outcome::done;
    // Typed as well, the text would stand there twice.
    if (mayHaveActed(*set))
        return outcomeUnsaid(busElement(*now).reference);
    bool isNumber = false;
    const double number = text.toDouble(&isNumber);
    if (!isNumber)
        return Outcome::refused;
    const auto changed = askToAct(
        *now, u"org.freedesktop.DBus.Properties"_s, u"Set"_s,
        {u"org.a11y.atspi.Value"_s, u"CurrentValue"_s, QVariant::fromValue(QDBusVariant(number))}, stop);
    if (!changed)
        return Outcome::stopped;
    if (mayHaveActed(*changed))
        return outcomeUnsaid(busElement(*now).reference);
    return changed->kind == AccessibilityAnswer::Kind::answered ? Outcome::done : Outcome::refused;
}

} // namespace morvane
