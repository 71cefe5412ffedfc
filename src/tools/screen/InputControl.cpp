#include "tools/screen/InputControl.h"

#include "base/Text.h"
#include "platform/Clipboard.h"
#include "tools/screen/KeyCombination.h"
#include "tools/screen/LayoutKeycodes.h"
#include "tools/screen/ScreenInventory.h"
#include "tools/screen/SequenceClock.h"

#include <algorithm>
#include <limits>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace morvane {
namespace {

constexpr auto permissionPause = 2s;
constexpr auto beforeNextTry = 20ms;
/// How long typing waits for a program to read what it was given.
constexpr auto readingLimit = 10s;
/// How long pasting waits for a program to ask for the text.
constexpr auto pastingLimit = 1s;
constexpr auto pastingLook = 10ms;
constexpr int dragSteps = 12;
constexpr int scrollSteps = 8;
constexpr qint64 pixelsPerAmount = 12;
constexpr qsizetype shownLabel = 40;
constexpr qsizetype shownText = 60;

const QString nothingToType = u"Error: nothing to type."_s;

/// The message field of this program, where it would be sent in the user's name.
QString wouldTypeIntoOwnWindow(const QString &reason)
{
    return u"Error: nothing was typed, because "_s + reason +
           u" Bring the application that it is meant for to the front with activate_app, then try again. A "
           "page in Morvane's own browser is worked with the browser tools, such as browser_type and "
           "browser_click."_s;
}

QString place(QPoint point)
{
    return u'(' + QString::number(point.x()) + u", "_s + QString::number(point.y()) + u')';
}

/// A point of the screen in whole numbers, cut as the model was told it.
QPoint whole(QPointF point)
{
    return {int(point.x()), int(point.y())};
}

QString noElement(qint64 index)
{
    return u"Error: there is no element ["_s + QString::number(index) +
           u"]. Run capture_screen first and use a number from its 'Clickable elements' list."_s;
}

QString typingStopped(const std::u32string &text, std::size_t typed, const QString &reason)
{
    const auto count = [](const std::u32string &part) {
        return QString::number(characterCount(QString::fromStdU32String(part)));
    };
    return u"Error: typing was stopped after "_s + count(text.substr(0, typed)) + u" of "_s + count(text) +
           u" characters, because "_s + reason;
}

QString elsewhere(KeyboardHolder holder)
{
    return holder == KeyboardHolder::ownWindow ? u"the user turned to Morvane's window."_s
                                               : u"another window came to the front."_s;
}

QString elementGone(qint64 index)
{
    return u"Error: element ["_s + QString::number(index) +
           u"] is no longer on the screen. Run capture_screen again and use a number from its new list."_s;
}

QString elementCovered(qint64 index)
{
    return u"Error: element ["_s + QString::number(index) +
           u"] is behind another window. Bring its application to the front with activate_app, then run "
           "capture_screen again."_s;
}

} // namespace

InputControl::InputControl(Desktop desktop, std::shared_ptr<ScreenInventory> inventory,
                           std::shared_ptr<const LayoutKeycodes> layout, std::stop_token stop)
    : m_desktop(std::move(desktop)), m_inventory(std::move(inventory)), m_layout(std::move(layout)),
      m_stop(std::move(stop))
{
}

QString InputControl::permissionProblem()
{
    bool isTrusted = m_desktop.input->isTrusted(m_stop);
    if (!isTrusted) {
        m_desktop.input->requestTrust();
        pause(permissionPause);
        isTrusted = m_desktop.input->isTrusted(m_stop);
    }
    // Not every tool begins with an event.
    pause(0ms);
    if (isTrusted)
        return {};
    return u"Error: Morvane needs Accessibility permission to control your Mac. Open System Settings, "
           u"Privacy "
           "and Security, Accessibility, and enable Morvane, then try again."_s;
}

QString InputControl::ownWindowProblem()
{
    return ownWindowProblem(*m_desktop.input->newSource(m_stop));
}

QString InputControl::ownWindowProblem(InputSource &source)
{
    return source.keyboardHolder() == KeyboardHolder::ownWindow
               ? wouldTypeIntoOwnWindow(u"Morvane's own window is in front."_s)
               : QString();
}

void InputControl::pause(std::chrono::milliseconds duration)
{
    if (duration.count() > 0 && !m_stop.stop_requested())
        m_desktop.clock->sleep(duration, m_stop);
    if (m_stop.stop_requested())
        throw SequenceStopped();
}

std::unique_ptr<InputSource> InputControl::pointerAt(QPoint point)
{
    pause(0ms);
    auto source = m_desktop.input->newSource(m_stop);
    source->warp(point);
    pause(30ms);
    return source;
}

void InputControl::press(InputSource &source, MouseButton button, QPoint point,
                         std::chrono::milliseconds held)
{
    source.buttonDown(button, point);
    pause(held);
    source.buttonUp(button, point);
}

QString InputControl::elementAtPointDescription(QPoint point)
{
    const std::optional<ScreenElement> element = m_desktop.elements->elementAt(point, m_stop);
    if (!element || element->role.isEmpty())
        return {};
    const QString label = element->title         ? *element->title
                          : element->description ? *element->description
                                                 : element->value.value_or(QString());
    const QString role = friendlyRole(element->role);
    return label.isEmpty() ? role : role + u" '"_s + singleLine(firstCharacters(label, shownLabel)) + u'\'';
}

QString InputControl::clickAt(QPoint point)
{
    const QString problem = permissionProblem();
    return problem.isEmpty() ? click(point) : problem;
}

QString InputControl::click(QPoint point)
{
    // Before the pointer moves, so that the model learns what it hit.
    const QString description = elementAtPointDescription(point);
    const auto source = pointerAt(point);
    source->mouseMoved(point);
    pause(20ms);
    press(*source, MouseButton::left, point, 80ms);
    return u"Clicked at "_s + place(point) + (description.isEmpty() ? QString() : u" on "_s + description) +
           u'.';
}

QString InputControl::axClick(qint64 index)
{
    if (const QString problem = permissionProblem(); !problem.isEmpty())
        return problem;
    const std::optional<AXElementInfo> info = m_inventory->element(index);
    if (!info)
        return noElement(index);
    if (info->pressable) {
        switch (m_desktop.elements->press(info->element, m_stop)) {
        case AccessibilityTree::Outcome::done:
            return u"Pressed "_s + info->summary() + u" at "_s + place(whole(info->center)) + u'.';
        case AccessibilityTree::Outcome::gone:
            return elementGone(index);
        case AccessibilityTree::Outcome::stopped:
            throw SequenceStopped();
        case AccessibilityTree::Outcome::refused:
            break;
        }
    }
    const auto center = reachableCenter(*info, index);
    return center ? u"AXPress was refused; "_s + click(*center) : center.error();
}

std::expected<QPoint, QString> InputControl::reachableCenter(const AXElementInfo &info, qint64 index)
{
    const std::optional<ScreenElement> current = m_desktop.elements->current(info.element, m_stop);
    if (!current || !current->frame)
        return std::unexpected(elementGone(index));
    if (m_desktop.elements->isCovered(*current, m_stop))
        return std::unexpected(elementCovered(index));
    return whole(current->frame->center());
}

QString InputControl::axType(qint64 index, const QString &text)
{
    if (const QString problem = permissionProblem(); !problem.isEmpty())
        return problem;
    const std::optional<AXElementInfo> info = m_inventory->element(index);
    if (!info)
        return noElement(index);
    if (text.isEmpty())
        return nothingToType;
    if (m_desktop.elements->isOwn(info->element))
        return wouldTypeIntoOwnWindow(u"element ["_s + QString::number(index) +
                                      u"] is in Morvane's own window."_s);
    switch (m_desktop.elements->setValue(info->element, text, m_stop)) {
    case AccessibilityTree::Outcome::done:
        return u"Set the contents of "_s + info->summary() + u" to \""_s + firstCharacters(text, shownText) +
               u"\"."_s;
    case AccessibilityTree::Outcome::gone:
        return elementGone(index);
    case AccessibilityTree::Outcome::stopped:
        throw SequenceStopped();
    case AccessibilityTree::Outcome::refused:
        break;
    }
    const auto center = reachableCenter(*info, index);
    if (!center)
        return center.error();
    click(*center);
    pause(200ms);
    return type(text);
}

QString InputControl::characterProblem(InputSource &source, char32_t character)
{
    for (auto waited = 0ms; waited < readingLimit; waited += beforeNextTry) {
        // A window may close, or the user take another, at any time; the rest is not meant for that one.
        if (const auto holder = source.keyboardHolder(); holder != KeyboardHolder::sameWindow)
            return elsewhere(holder);
        if (source.characterDown(character))
            return {};
        pause(beforeNextTry);
    }
    return u"the application in front does not read them."_s;
}

QString InputControl::typeText(const QString &text)
{
    const QString problem = permissionProblem();
    return problem.isEmpty() ? type(text) : problem;
}

QString InputControl::type(const QString &text)
{
    if (text.isEmpty())
        return nothingToType;
    pause(0ms);
    const auto source = m_desktop.input->newSource(m_stop);
    if (const QString problem = ownWindowProblem(*source); !problem.isEmpty())
        return problem;
    source->prepareText(text);
    const std::u32string characters = text.toStdU32String();
    for (std::size_t at = 0; at < characters.size(); ++at) {
        if (const QString problem = characterProblem(*source, characters[at]); !problem.isEmpty())
            return typingStopped(characters, at, problem);
        source->characterUp(characters[at]);
        pause(10ms);
    }
    return u"Typed "_s + QString::number(characterCount(text)) + u" characters."_s;
}

QString InputControl::pressKey(const QString &key)
{
    if (const QString problem = permissionProblem(); !problem.isEmpty())
        return problem;
    const auto combination = parseKeyCombination(key, *m_layout);
    if (!combination)
        return combination.error();
    pause(0ms);
    const auto source = m_desktop.input->newSource(m_stop);
    if (const QString problem = ownWindowProblem(*source); !problem.isEmpty())
        return problem;
    source->keyDown(combination->code, combination->flags);
    pause(20ms);
    source->keyUp(combination->code, combination->flags);
    return u"Pressed "_s + key + u'.';
}

void InputControl::pressPasteKey()
{
    const Clipboard &clipboard = *m_desktop.clipboard;
    const int before = clipboard.readings();
    pressKey(u"command+v"_s);
    for (auto waited = 0ms; waited < pastingLimit && clipboard.readings() == before; waited += pastingLook)
        pause(pastingLook);
}

QString InputControl::moveCursor(QPoint point)
{
    if (const QString problem = permissionProblem(); !problem.isEmpty())
        return problem;
    pause(0ms);
    m_desktop.input->newSource(m_stop)->warp(point);
    return u"Moved the cursor to "_s + place(point) + u'.';
}

QString InputControl::mouseDoubleClick(QPoint point)
{
    if (const QString problem = permissionProblem(); !problem.isEmpty())
        return problem;
    const auto source = pointerAt(point);
    for (int click = 0; click < 2; ++click) {
        press(*source, MouseButton::left, point, 50ms);
        pause(30ms);
    }
    return u"Double-clicked at "_s + place(point) + u'.';
}

QString InputControl::mouseRightClick(QPoint point)
{
    if (const QString problem = permissionProblem(); !problem.isEmpty())
        return problem;
    const auto source = pointerAt(point);
    press(*source, MouseButton::right, point, 50ms);
    return u"Right-clicked at "_s + place(point) + u'.';
}

QString InputControl::mouseDrag(QPoint from, QPoint to)
{
    if (const QString problem = permissionProblem(); !problem.isEmpty())
        return problem;
    const auto source = pointerAt(from);
    source->mouseMoved(from);
    pause(20ms);
    source->buttonDown(MouseButton::left, from);
    pause(50ms);
    const auto between = [](int start, int end, int step) {
        return int(start + (qint64(end) - start) * step / dragSteps);
    };
    for (int step = 1; step <= dragSteps; ++step) {
        source->dragged({between(from.x(), to.x(), step), between(from.y(), to.y(), step)});
        pause(15ms);
    }
    source->buttonUp(MouseButton::left, to);
    return u"Dragged from "_s + place(from) + u" to "_s + place(to) + u'.';
}

QString InputControl::mouseScroll(qint64 amount)
{
    if (const QString problem = permissionProblem(); !problem.isEmpty())
        return problem;
    constexpr qint64 most = std::numeric_limits<qint32>::max() / pixelsPerAmount;
    const int delta = int(std::clamp(amount, -most, most) * pixelsPerAmount);
    pause(0ms);
    const auto source = m_desktop.input->newSource(m_stop);
    for (int step = 0; step < scrollSteps; ++step) {
        source->scroll(delta);
        pause(12ms);
    }
    if (amount == 0)
        return u"Scrolled the mouse wheel."_s;
    return amount > 0 ? u"Scrolled the mouse wheel up."_s : u"Scrolled the mouse wheel down."_s;
}

} // namespace morvane
