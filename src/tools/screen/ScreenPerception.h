#pragma once

#include "tools/screen/AXElementInfo.h"
#include "tools/screen/Desktop.h"
#include "tools/screen/ScreenInventory.h"

#include <QImage>
#include <QList>
#include <QRect>
#include <QString>
#include <memory>
#include <optional>
#include <stop_token>

namespace morvane {

struct DesktopWindow;
struct RunningApplication;

/// Tells what the screen shows as a text: recognised lines and clickable elements, both with coordinates.
/// Blocks, for seconds where the user or a program has to answer; one object for each look.
class ScreenPerception {
public:
    ScreenPerception(Desktop desktop, std::shared_ptr<ScreenInventory> inventory, std::stop_token stop);

    /// A text for the model; replaces the inventory. Empty, and the inventory as it was, after a stop.
    QString captureScreen();

    /// One line for each recognised one, with the point of the screen that lies in its middle.
    QString ocr(const QImage &image, const QRect &region);

    /// The clickable elements of a program in reading order, at most 50.
    QList<AXElementInfo> accessibilityInventory(qint64 pid);

private:
    struct Region {
        QRect frame;
        QString title; ///< Of the frontmost window.
    };

    bool screenRecordingGranted();
    std::optional<Region> chooseRegion(const std::optional<RunningApplication> &frontmost);
    std::optional<DesktopWindow> frontmostWindowFrame(qint64 pid);

    const Desktop m_desktop;
    const std::shared_ptr<ScreenInventory> m_inventory;
    const std::stop_token m_stop;
};

} // namespace morvane
