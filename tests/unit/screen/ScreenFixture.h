#pragma once

#include "async/Scheduler.h"
#include "async/SystemClock.h"
#include "support/FakeDesktop.h"
#include "support/RunTask.h"
#include "tools/screen/ScreenTools.h"

#include <atomic>
#include <gmock/gmock.h>
#include <thread>

namespace morvane {

/// The tools on a desktop that only remembers.
class ScreenFixture : public testing::Test {
protected:
    QString run(Task<ToolResult> task) { return runTask(m_scheduler, std::move(task)).text; }
    QStringList events() const { return m_desktop.log.events(); }

    /// What a tool says that is stopped while the desktop does something for it. `hook` is the fake's that is
    /// called meanwhile.
    QString stopDuring(std::function<void(const std::stop_token &)> &hook, Task<ToolResult> tool)
    {
        std::atomic<bool> isBusy = false;
        std::atomic<bool> goesOn = false;
        hook = [&](const std::stop_token &stop) {
            isBusy = true;
            while (!stop.stop_requested() && !goesOn)
                std::this_thread::yield();
        };
        TaskHandle<ToolResult> running = m_scheduler.spawn(std::move(tool));
        EXPECT_TRUE(waitUntil([&] { return isBusy.load(); }));
        running.cancel();
        EXPECT_TRUE(waitUntil([&] { return running.done(); }));
        goesOn = true;
        EXPECT_TRUE(waitUntil([&] { return running.done(); }));
        hook = nullptr;
        return running.result().text;
    }

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
