#include "tools/screen/ScreenTools.h"

#include "async/CurrentContext.h"
#include "async/OffMain.h"
#include "async/Scheduler.h"
#include "async/StopOnCancel.h"
#include "base/Text.h"
#include "platform/Applications.h"
#include "platform/Clipboard.h"
#include "platform/DisplaySilent.h"
#include "tools/screen/InputControl.h"
#include "tools/screen/LayoutKeycodes.h"
#include "tools/screen/ScreenInventory.h"
#include "tools/screen/ScreenPerception.h"

#include <QUrl>
#include <mutex>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

const QString stopped = u"Error: stopped before it was done."_s;
const QString displayIsSilent =
    u"Error: the display does not answer, so it is not known how much of this was done. A program that hangs "
    "may be holding it. Ask the user to end that program, then run capture_screen before you go on."_s;

QString couldNotLaunch(const QString &name)
{
    return u"Error: could not find or launch the application named \""_s + name + u"\"."_s;
}

} // namespace

ScreenTools::ScreenTools(Desktop desktop)
    : m_shared(std::make_shared<Shared>(std::move(desktop), std::make_shared<ScreenInventory>(),
                                        std::make_shared<LayoutKeycodes>()))
{
}

Task<void> ScreenTools::warmKeyboardLayout()
{
    co_await runOffMain([shared = m_shared] { shared->layout->warm(*shared->desktop.input); });
}

Task<ToolResult> ScreenTools::captureScreen()
{
    return runOnDesktop([](Shared &shared, const std::stop_token &stop) {
        const QString text = ScreenPerception(shared.desktop, shared.inventory, stop).captureScreen();
        return text.isEmpty() ? stopped : text;
    });
}

Task<ToolResult> ScreenTools::runOnDesktop(Work work)
{
    const TaskContext context = co_await currentContext();
    const StopOnCancel stop(*context.cancellation);
    co_return co_await runOffMain([shared = m_shared, work = std::move(work), token = stop.token()] {
        try {
            return work(*shared, token);
        } catch (const SequenceStopped &) {
            return stopped;
        } catch (const DisplaySilent &) {
            return token.stop_requested() ? stopped : displayIsSilent;
        }
    });
}

Task<ToolResult> ScreenTools::runSequence(Sequence sequence)
{
    return runOnDesktop([sequence = std::move(sequence)](Shared &shared, const std::stop_token &stop) {
        shared.turn.lock(stop);
        const std::lock_guard turn(shared.turn, std::adopt_lock);
        InputControl control(shared.desktop, shared.inventory, shared.layout, stop);
        return sequence(control);
    });
}

Task<ToolResult> ScreenTools::clickAt(QPoint point)
{
    return runSequence([point](InputControl &control) { return control.clickAt(point); });
}

Task<ToolResult> ScreenTools::axClick(qint64 index)
{
    return runSequence([index](InputControl &control) { return control.axClick(index); });
}

Task<ToolResult> ScreenTools::axType(qint64 index, QString text)
{
    return runSequence(
        [index, text = std::move(text)](InputControl &control) { return control.axType(index, text); });
}

Task<ToolResult> ScreenTools::typeText(QString text)
{
    return runSequence([text = std::move(text)](InputControl &control) { return control.typeText(text); });
}

Task<ToolResult> ScreenTools::pressKey(QString key)
{
    return runSequence([key = std::move(key)](InputControl &control) { return control.pressKey(key); });
}

Task<ToolResult> ScreenTools::moveCursor(QPoint point)
{
    return runSequence([point](InputControl &control) { return control.moveCursor(point); });
}

Task<ToolResult> ScreenTools::mouseDoubleClick(QPoint point)
{
    return runSequence([point](InputControl &control) { return control.mouseDoubleClick(point); });
}

Task<ToolResult> ScreenTools::mouseRightClick(QPoint point)
{
    return runSequence([point](InputControl &control) { return control.mouseRightClick(point); });
}

Task<ToolResult> ScreenTools::mouseDrag(QPoint from, QPoint to)
{
    return runSequence([from, to](InputControl &control) { return control.mouseDrag(from, to); });
}

Task<ToolResult> ScreenTools::mouseScroll(qint64 amount)
{
    return runSequence([amount](InputControl &control) { return control.mouseScroll(amount); });
}

Task<ToolResult> ScreenTools::pasteText(QString text)
{
    const QString pasted = trimmed(text);
    const ToolResult problem = co_await runSequence([isEmpty = pasted.isEmpty()](InputControl &control) {
        QString permission = control.permissionProblem();
        if (!permission.isEmpty())
            return permission;
        return isEmpty ? u"Error: nothing to paste."_s : control.ownWindowProblem();
    });
    if (!problem.text.isEmpty())
        co_return problem;
    m_shared->desktop.clipboard->setText(pasted);
    const ToolResult late = co_await runSequence([](InputControl &control) {
        QString elsewhere = control.ownWindowProblem();
        if (elsewhere.isEmpty())
            control.pressPasteKey();
        return elsewhere;
    });
    if (!late.text.isEmpty())
        co_return late;
    co_return u"Pasted "_s + QString::number(characterCount(pasted)) + u" characters into the focused app."_s;
}

Task<ToolResult> ScreenTools::clipboardRead()
{
    return runOnDesktop([](Shared &shared, const std::stop_token &stop) {
        const std::optional<QString> text = shared.desktop.clipboard->text(stop);
        if (stop.stop_requested())
            return stopped;
        if (!text || text->isEmpty())
            return u"The clipboard is empty or does not contain text."_s;
        return u"Clipboard content: "_s + *text;
    });
}

Task<ToolResult> ScreenTools::clipboardSet(QString text)
{
    const QString copied = trimmed(text);
    if (copied.isEmpty())
        co_return u"Error: nothing to copy."_s;
    m_shared->desktop.clipboard->setText(copied);
    co_return u"Copied "_s + QString::number(characterCount(copied)) + u" characters to the clipboard."_s;
}

Task<ToolResult> ScreenTools::frontmostApp()
{
    return runOnDesktop([](Shared &shared, const std::stop_token &stop) {
        const auto frontmost = shared.desktop.applications->frontmost(stop);
        const QString name = frontmost ? frontmost->name : QString();
        return u"The frontmost application is "_s + (name.isEmpty() ? u"unknown"_s : name) + u'.';
    });
}

Task<ToolResult> ScreenTools::openURL(QString url, QString application)
{
    const QUrl address(trimmed(url), QUrl::TolerantMode);
    if (!address.isValid() || address.scheme().isEmpty()) {
        co_return u"Error: \""_s + url +
            u"\" is not a valid URL. Use a full address like "
            "https://www.youtube.com/results?search_query=piano+lesson"_s;
    }
    co_return co_await runOnDesktop([address, application](Shared &shared, const std::stop_token &stop) {
        if (shared.desktop.applications->openAddress(address, application, stop))
            return u"Opened "_s + address.toString(QUrl::FullyEncoded) + u" in the browser."_s;
        return stop.stop_requested()
                   ? stopped
                   : u"Error: could not open the URL. Make sure a default browser is set."_s;
    });
}

Task<ToolResult> ScreenTools::openApplication(QString name)
{
    return runOnDesktop([name = std::move(name)](Shared &shared, const std::stop_token &stop) {
        if (shared.desktop.applications->open(name, stop))
            return u"Opened the "_s + name + u" application."_s;
        return stop.stop_requested()
                   ? stopped
                   : u"Error: could not find or open the application named \""_s + name + u"\"."_s;
    });
}

Task<ToolResult> ScreenTools::activateApp(QString name)
{
    const QString wanted = trimmed(name);
    if (wanted.isEmpty())
        co_return u"Error: an application name is required."_s;
    co_return co_await runOnDesktop([wanted](Shared &shared, const std::stop_token &stop) {
        Applications &applications = *shared.desktop.applications;
        for (const RunningApplication &application : applications.running(stop)) {
            if (application.name.compare(wanted, Qt::CaseInsensitive) == 0) {
                applications.activate(application, stop);
                return u"Activated "_s + wanted + u'.';
            }
        }
        if (applications.open(wanted, stop))
            return u"Launched and activated "_s + wanted + u'.';
        return stop.stop_requested() ? stopped : couldNotLaunch(wanted);
    });
}

} // namespace morvane
