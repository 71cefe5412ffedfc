#include "tools/screen/ScreenPerception.h"

#include "base/Text.h"
#include "platform/Applications.h"
#include "platform/ScreenCapture.h"
#include "platform/TextRecognizer.h"
#include "tools/screen/ElementWalk.h"
#include "tools/screen/SequenceClock.h"

#include <QStringList>
#include <algorithm>
#include <chrono>
#include <future>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace morvane {
namespace {

constexpr auto permissionPause = 3s;
/// For all questions to the program together: a program that hangs is passed over.
constexpr auto walkLimit = 1500ms;
constexpr auto secondWalkPause = 300ms;
constexpr qsizetype mostElements = 50;
constexpr qreal smallestWindowSide = 50;

const QString notGranted =
    u"Error: Morvane needs Screen Recording permission to see your screen. A permission request was shown. "
    u"If "
    "no dialog appeared, open System Settings, Privacy and Security, Screen and System Audio Recording, and "
    "enable Morvane. Then ask me to look at the screen again."_s;
const QString notCaptured =
    u"Error: could not capture the screen. If no windows appeared in the picture, grant Morvane Screen "
    "Recording permission in System Settings, then ask me to look at the screen again."_s;
const QString nothingReadable = u"The screen was captured, but no readable text was found. If windows are "
                                u"missing from the capture, grant "
                                "Morvane Screen Recording permission in System Settings and try again."_s;

QString point(QPointF place, QLatin1String separator)
{
    return QString::number(qint64(place.x())) + separator + QString::number(qint64(place.y()));
}

qreal area(const QRectF &frame)
{
    return frame.width() * frame.height();
}

/// A point on the edge of two displays is on the one that begins there.
bool holds(const QRect &display, QPointF place)
{
    return place.x() >= display.x() && place.x() < display.x() + display.width() &&
           place.y() >= display.y() && place.y() < display.y() + display.height();
}

/// The first display that shows most of the window; the first of all for a window that none shows.
QRect displayOf(const QList<QRect> &displays, const QRectF &window)
{
    const auto shown = [&window](const QRect &display) { return area(QRectF(display) & window); };
    return *std::max_element(displays.begin(), displays.end(),
                             [&](const QRect &one, const QRect &other) { return shown(one) < shown(other); });
}

QString heading(const QRect &region, const QString &title)
{
    QString text = u"Here is what is on the screen right now"_s;
    if (!title.isEmpty())
        text += u" (frontmost window: \""_s + singleLine(title) + u"\")"_s;
    return text + u".\nScreen region: %1 x %2 points with top-left corner at (%3, %4). "
                  "Text with click coordinates:\n"_s.arg(region.width())
                      .arg(region.height())
                      .arg(region.x())
                      .arg(region.y());
}

QString elementLines(const QList<AXElementInfo> &elements)
{
    QString text;
    for (qsizetype at = 0; at < elements.size(); ++at)
        text += u'[' + QString::number(at + 1) + u"] "_s + elements.at(at).summary() + u" at ("_s +
                point(elements.at(at).center, ", "_L1) + u")\n"_s;
    return text;
}

} // namespace

ScreenPerception::ScreenPerception(Desktop desktop, std::shared_ptr<ScreenInventory> inventory,
                                   std::stop_token stop)
    : m_desktop(std::move(desktop)), m_inventory(std::move(inventory)), m_stop(std::move(stop))
{
}

QString ScreenPerception::captureScreen()
{
    if (!screenRecordingGranted())
        return notGranted;
    const std::optional<RunningApplication> frontmost = m_desktop.applications->frontmost(m_stop);
    const std::optional<Region> region = chooseRegion(frontmost);
    const QImage image = region ? m_desktop.screen->capture(region->frame, m_stop) : QImage();
    if (image.isNull())
        return notCaptured;
    // The walk waits for another program while recognition uses the processors.
    std::future<QList<AXElementInfo>> walk;
    if (frontmost)
        walk = std::async(std::launch::async | std::launch::deferred,
                          [this, pid = frontmost->pid] { return accessibilityInventory(pid); });
    const QString lines = ocr(image, region->frame);
    const QList<AXElementInfo> elements = walk.valid() ? walk.get() : QList<AXElementInfo>();
    // The model goes on with the numbers that it knows.
    if (m_stop.stop_requested())
        return {};
    m_inventory->replace(elements);
    if (lines.isEmpty() && elements.isEmpty())
        return nothingReadable;
    const QString text = heading(region->frame, region->title) + lines;
    if (elements.isEmpty()) {
        const QString name =
            frontmost && !frontmost->name.isEmpty() ? frontmost->name : u"the frontmost app"_s;
        return text + u"\n\n(No clickable elements were exposed by \""_s + name +
               u"\" — use click_at with the OCR coordinates above.)\n"_s;
    }
    return text +
           u"\n\nClickable elements (exact coordinates from macOS Accessibility — prefer ax_click with these "
           "numbers):\n"_s +
           elementLines(elements);
}

bool ScreenPerception::screenRecordingGranted()
{
    if (m_desktop.screen->isGranted(m_stop))
        return true;
    m_desktop.screen->requestAccess();
    m_desktop.clock->sleep(permissionPause, m_stop);
    return m_desktop.screen->isGranted(m_stop);
}

std::optional<ScreenPerception::Region>
ScreenPerception::chooseRegion(const std::optional<RunningApplication> &frontmost)
{
    const QList<QRect> displays = m_desktop.screen->displays(m_stop);
    if (displays.isEmpty())
        return std::nullopt;
    const auto displayAt = [&displays](QPointF place, const QRectF &window) {
        for (const QRect &display : displays)
            if (holds(display, place))
                return display;
        return displayOf(displays, window);
    };
    if (frontmost)
        if (const auto window = frontmostWindowFrame(frontmost->pid))
            return Region{displayAt(window->frame.center(), window->frame), window->title};
    return Region{displayAt(m_desktop.screen->pointer(m_stop), {}), {}};
}

std::optional<DesktopWindow> ScreenPerception::frontmostWindowFrame(qint64 pid)
{
    if (auto focused = m_desktop.applications->focusedWindow(pid, m_stop))
        return focused;
    const QList<DesktopWindow> windows = m_desktop.applications->windows(m_stop);
    const DesktopWindow *largest = nullptr;
    for (const DesktopWindow &window : windows)
        if (window.pid == pid && window.layer == 0 && (!largest || area(window.frame) > area(largest->frame)))
            largest = &window;
    if (!largest || largest->frame.width() <= smallestWindowSide ||
        largest->frame.height() <= smallestWindowSide)
        return std::nullopt;
    return *largest;
}

QString ScreenPerception::ocr(const QImage &image, const QRect &region)
{
    const qreal scaleX = image.width() / std::max<qreal>(region.width(), 1);
    const qreal scaleY = image.height() / std::max<qreal>(region.height(), 1);
    QStringList lines;
    for (const RecognizedLine &line : m_desktop.recognizer->recognize(image, m_stop)) {
        const QPointF middle = line.box.center();
        const QPointF place(region.x() + middle.x() / scaleX, region.y() + middle.y() / scaleY);
        lines.append(line.text + u"  [click "_s + point(place, ","_L1) + u']');
    }
    return lines.join(u'\n');
}

QList<AXElementInfo> ScreenPerception::accessibilityInventory(qint64 pid)
{
    AccessibilityTree &tree = *m_desktop.elements;
    const QDeadlineTimer deadline = m_desktop.clock->deadline(walkLimit);
    tree.enable();
    const auto find = [&] {
        const auto application = tree.application(pid, deadline);
        return application ? ElementWalk(tree, deadline, m_stop).find(*application) : QList<AXElementInfo>();
    };
    QList<AXElementInfo> elements = find();
    // Who has used up the time has not just been slow to build its tree.
    if (elements.isEmpty() && !deadline.hasExpired() && !m_stop.stop_requested()) {
        m_desktop.clock->sleep(secondWalkPause, m_stop);
        elements = find();
    }
    return inReadingOrder(elements).first(std::min(elements.size(), mostElements));
}

} // namespace morvane
