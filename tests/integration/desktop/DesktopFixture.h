#pragma once

#include "async/Scheduler.h"
#include "async/SystemClock.h"
#include "platform/linux/desktop/LinuxAccessibilityTree.h"
#include "platform/linux/desktop/LinuxApplications.h"
#include "platform/linux/desktop/LinuxClipboard.h"
#include "platform/linux/desktop/LinuxInputEvents.h"
#include "platform/linux/desktop/LinuxScreenCapture.h"
#include "platform/linux/desktop/LinuxTextRecognizer.h"
#include "support/RunTask.h"
#include "support/TestProgram.h"
#include "tools/screen/RealSequenceClock.h"
#include "tools/screen/ScreenTools.h"

#include <QDir>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <gmock/gmock.h>

namespace morvane {

/// The tools as the program has them, and other programs on the same desktop.
class DesktopFixture : public testing::Test {
protected:
    DesktopFixture() : DesktopFixture(desktop()) {}
    explicit DesktopFixture(Desktop desktop) : m_tools(std::move(desktop)) {}
    ~DesktopFixture() override;

    /// What the program's tools act on.
    static Desktop desktop(std::shared_ptr<SequenceClock> clock = std::make_shared<RealSequenceClock>());
    /// The same, but no picture shows any text: to read it is most of the work of a look.
    static Desktop desktopWithoutText();
    QString run(Task<ToolResult> task);
    QString capture() { return run(m_tools.captureScreen()); }

    /// Starts a program and waits until it has the focus. `variables` are added to its environment.
    TestProgram &start(const QString &program, const QStringList &arguments,
                       const QMap<QString, QString> &variables = {});
    /// Starts a program of GTK 3 whose window has the widget that `widget` makes, in Python. `changed`
    /// becomes its window's title when it has been told to change, by SIGUSR1, and has done what `change`
    /// says.
    TestProgram &startWindow(const QString &widget, const QString &change = QStringLiteral("pass"));
    /// Looks until the text of the screen has `wanted`, or all of them at once: what is read in the picture
    /// and what a program tells of itself come at moments of their own.
    QString captureWith(const QString &wanted) { return captureWith(QStringList{wanted}); }
    QString captureWith(const QStringList &wanted);
    /// Looks until `words` are read in the picture: where.
    QPoint placeOfShown(const QString &words);
    /// Clicks on the first element of this summary: where.
    QPoint clickOn(const QString &summary);
    /// Stops a program at a moment when it does not hold the display.
    static void holdUp(const TestProgram &program);
    static void goOn(const TestProgram &program);
    static bool displayIsSilent();
    /// Presses the key that copies: whether that is what is on the clipboard, now or soon.
    bool copies(const QString &wanted);
    /// The number of the first element in a capture's text whose line has `summary`; 0 if there is none.
    static int numberOf(const QString &text, const QString &summary);
    /// The place of that element, and of the recognised line that has `words`; nothing if there is none.
    static std::optional<QPoint> placeOf(const QString &text, const QString &summary);
    static std::optional<QPoint> placeOfText(const QString &text, const QString &words);
    /// Whether keys go to a window of this program. What the window manager says of it does not count: at
    /// times it names a window active while the keyboard is on none.
    static bool hasTheKeyboard(qint64 pid);
    static QString programLog(const TestProgram &program) { return program.log(); }

    QTemporaryDir m_folder;
    SystemClock m_clock;
    Scheduler m_scheduler{m_clock};
    ScreenTools m_tools;
    std::vector<std::unique_ptr<TestProgram>> m_programs;
};

} // namespace morvane
