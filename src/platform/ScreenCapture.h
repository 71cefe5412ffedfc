#pragma once

#include <QImage>
#include <QList>
#include <QPoint>
#include <QRect>
#include <stop_token>

namespace morvane {

/// The displays and what they show. All coordinates are pixels of the whole desktop with the origin at the
/// top left of the primary display; other displays may lie at negative ones. Any thread; calls may block for
/// milliseconds, `capture` longer. `stop` ends the waiting for an answer, by DisplaySilent.
class ScreenCapture {
public:
    virtual ~ScreenCapture() = default;

    /// Whether pictures can be taken now.
    virtual bool isGranted(const std::stop_token &stop) = 0;
    /// Has the desktop ask the user for it, where it does so; returns at once.
    virtual void requestAccess() = 0;

    /// The primary display first; empty if the desktop cannot be reached.
    virtual QList<QRect> displays(const std::stop_token &stop) = 0;
    virtual QPoint pointer(const std::stop_token &stop) = 0;

    /// What `region` shows; null on failure. May hold more pixels than the region has points.
    virtual QImage capture(const QRect &region, const std::stop_token &stop) = 0;
};

} // namespace morvane
