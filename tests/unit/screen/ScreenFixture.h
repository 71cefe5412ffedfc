#pragma once

#include "async/Scheduler.h"
#include "async/SystemClock.h"
#include "support/FakeDesktop.h"
#include "support/RunTask.h"
#include "tools/screen/ScreenTools.h"

#include <gmock/gmock.h>

namespace morvane {

/// The tools on a desktop that only remembers.
class ScreenFixture : public testing::Test {
protected:
    QString run(Task<ToolResult> task) { return runTask(m_scheduler, std::move(task)).text; }
    QStringList events() const { return m_desktop.log.events(); }

    /// A program in front with a focused window on the first display.
    void showFront(const FakeElement &tree = {})
    {
        m_desktop.applications->front = RunningApplication{7, QStringLiteral("Editor")};
        m_desktop.applications->focused =
            DesktopWindow{7, 0, QRectF(100, 100, 400, 300), QStringLiteral("notes.txt")};
        m_desktop.elements->applications[7] = tree;
    }

    /// Makes a capture that finds this element alone, and forgets what was logged.
    void showElement(const QString &role, const QString &title, bool pressable)
    {
        const FakeElement element{role, title, QRectF(10, 10, 30, 20), pressable, {}, {}, {}};
        showFront({QStringLiteral("AXGroup"), {}, {}, false, {element}, {}, {}});
        run(m_tools.captureScreen());
        m_desktop.log.clear();
    }

    SystemClock m_clock;
    Scheduler m_scheduler{m_clock};
    FakeDesktop m_desktop;
    ScreenTools m_tools{m_desktop.desktop()};
};

} // namespace morvane
