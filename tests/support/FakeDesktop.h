#pragma once

#include "platform/AccessibilityTree.h"
#include "platform/Applications.h"
#include "platform/Clipboard.h"
#include "platform/InputEvents.h"
#include "platform/ScreenCapture.h"
#include "platform/TextRecognizer.h"
#include "tools/screen/Desktop.h"
#include "tools/screen/SequenceClock.h"

#include <QHash>
#include <QStringList>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>

namespace morvane {

/// What was asked of the desktop, in order, each as a short text. Any thread.
class DesktopLog {
public:
    void add(const QString &event);
    QStringList events() const;
    void clear();

private:
    mutable std::mutex m_mutex;
    QStringList m_events;
};

/// Waits take no time and are remembered. Stops a sequence at the wait that the test says.
class FakeSequenceClock : public SequenceClock {
public:
    explicit FakeSequenceClock(DesktopLog &log) : m_log(log) {}
    void sleep(std::chrono::milliseconds duration, const std::stop_token &stop) override;
    QDeadlineTimer deadline(std::chrono::milliseconds limit) override;

    /// Called at each wait, on the sequence's thread.
    std::function<void()> onSleep;
    bool isTimeUsedUp = false; ///< Whoever has a limit has reached it at once; else nobody ever does.

private:
    DesktopLog &m_log;
};

/// Called when something of this name is asked for, on its thread.
using QuestionHooks = QHash<QString, std::function<void(const std::stop_token &)>>;

class FakeScreenCapture : public ScreenCapture {
public:
    explicit FakeScreenCapture(DesktopLog &log) : m_log(log) {}
    bool isGranted(const std::stop_token &stop) override
    {
        if (onQuestion)
            onQuestion(stop);
        return granted;
    }
    void requestAccess() override;
    QList<QRect> displays(const std::stop_token &stop) override;
    QPoint pointer(const std::stop_token &stop) override;
    QImage capture(const QRect &region, const std::stop_token &stop) override;

    bool granted = true;
    bool grantsWhenAsked = false;
    QList<QRect> frames{{0, 0, 1000, 800}};
    QPoint mouse{10, 10};
    int pixelsPerPoint = 1;
    bool fails = false;
    /// Called when it is asked whether pictures can be taken, on its thread.
    std::function<void(const std::stop_token &)> onQuestion;
    QuestionHooks onAsked; ///< "displays", "pointer", "capture".

private:
    DesktopLog &m_log;
};

class FakeTextRecognizer : public TextRecognizer {
public:
    QList<RecognizedLine> recognize(const QImage &, const std::stop_token &stop) override
    {
        if (onRecognize)
            onRecognize(stop);
        return lines;
    }

    QList<RecognizedLine> lines;
    /// Called at each question, on its thread.
    std::function<void(const std::stop_token &)> onRecognize;
};

/// A tree that the test makes of FakeElements.
struct FakeElement {
    QString role;
    QString title;
    QRectF frame;
    bool pressable = true;
    QList<FakeElement> children;
    QString description;
    QString value;
};

class FakeAccessibilityTree : public AccessibilityTree {
public:
    explicit FakeAccessibilityTree(DesktopLog &log) : m_log(log) {}
    void enable() override { m_log.add(QStringLiteral("enable")); }
    std::optional<ScreenElement> application(qint64 pid, QDeadlineTimer deadline) override;
    QList<QList<ScreenElement>> children(const QList<ScreenElement> &parents, QDeadlineTimer deadline,
                                         const std::stop_token &stop) override;
    std::optional<ScreenElement> elementAt(QPointF point, const std::stop_token &stop) override;
    std::optional<ScreenElement> current(const ScreenElement &element, const std::stop_token &stop) override;
    bool isCovered(const ScreenElement &element, const std::stop_token &stop) override;
    bool isOwn(const ScreenElement &) const override { return own; }
    Outcome press(const ScreenElement &element, const std::stop_token &stop) override;
    Outcome setValue(const ScreenElement &element, const QString &text, const std::stop_token &stop) override;

    QHash<qint64, FakeElement> applications;
    std::optional<ScreenElement> underPointer;
    Outcome outcome = Outcome::done;
    bool covered = false;
    bool own = false;
    int questions = 0; ///< Waves of children that were asked for.
    /// Called at each question for an application.
    std::function<void()> onApplication;
    QuestionHooks onAsked; ///< "children", "elementAt", "current", "isCovered", "press", "setValue".
    /// Changes what an element is now against what it was when it was read.
    std::function<void(ScreenElement &)> onCurrent;

private:
    DesktopLog &m_log;
};

class FakeApplications : public Applications {
public:
    explicit FakeApplications(DesktopLog &log) : m_log(log) {}
    std::optional<RunningApplication> frontmost(const std::stop_token &stop) override
    {
        if (onQuestion)
            onQuestion(stop);
        return front;
    }
    std::optional<DesktopWindow> focusedWindow(qint64 pid, const std::stop_token &stop) override;
    QList<DesktopWindow> windows(const std::stop_token &stop) override;
    QList<RunningApplication> running(const std::stop_token &stop) override
    {
        if (onQuestion)
            onQuestion(stop);
        return runningApplications;
    }
    void activate(const RunningApplication &application, const std::stop_token &stop) override;
    bool open(const QString &name, const std::stop_token &stop) override;
    bool openAddress(const QUrl &address, const QString &application, const std::stop_token &stop) override;

    std::optional<RunningApplication> front;
    std::optional<DesktopWindow> focused;
    QList<DesktopWindow> allWindows;
    QList<RunningApplication> runningApplications;
    bool opens = true;
    /// Called before something is opened, on its thread.
    std::function<void(const std::stop_token &)> onOpen;
    /// Called when it is asked which program is in front or which run, on its thread.
    std::function<void(const std::stop_token &)> onQuestion;
    QuestionHooks onAsked; ///< "focusedWindow", "windows".

private:
    DesktopLog &m_log;
};

/// Every event with its place; what was let go of by the end of a source is told as "release".
class FakeInputEvents : public InputEvents {
public:
    explicit FakeInputEvents(DesktopLog &log) : m_log(log) {}
    bool isTrusted(const std::stop_token &stop) override
    {
        if (onQuestion)
            onQuestion(stop);
        return trusted;
    }
    void requestTrust() override;
    std::unique_ptr<InputSource> newSource(const std::stop_token &) override;
    QList<QString> layoutCharacters() override;

    bool trusted = true;
    bool trustsWhenAsked = false;
    QList<QString> layout;
    int layoutQuestions = 0;
    /// Called when it is asked whether events can be posted, on its thread.
    std::function<void(const std::stop_token &)> onQuestion;
    std::atomic<KeyboardHolder> keyboardHolder = KeyboardHolder::sameWindow; ///< Sources refer to it.
    /// How often a character has to be tried before the program in front has read the ones before it.
    std::atomic<int> unread = 0;

private:
    DesktopLog &m_log;
};

class FakeClipboard : public Clipboard {
public:
    explicit FakeClipboard(DesktopLog &log) : m_log(log) {}
    void setText(const QString &text) override;
    int readings() const override { return isAskedFor ? ++m_readings : 0; }
    std::optional<QString> text(const std::stop_token &stop) override
    {
        if (onRead)
            onRead(stop);
        return content;
    }

    std::optional<QString> content;
    bool isAskedFor = true; ///< Programs ask for it at once; else never.
    std::function<void()> onSet;
    /// Called at each question, on its thread.
    std::function<void(const std::stop_token &)> onRead;

private:
    DesktopLog &m_log;
    mutable std::atomic<int> m_readings = 0;
};

/// A whole desktop of fakes that write one log.
struct FakeDesktop {
    DesktopLog log;
    std::shared_ptr<FakeScreenCapture> screen = std::make_shared<FakeScreenCapture>(log);
    std::shared_ptr<FakeTextRecognizer> recognizer = std::make_shared<FakeTextRecognizer>();
    std::shared_ptr<FakeAccessibilityTree> elements = std::make_shared<FakeAccessibilityTree>(log);
    std::shared_ptr<FakeApplications> applications = std::make_shared<FakeApplications>(log);
    std::shared_ptr<FakeInputEvents> input = std::make_shared<FakeInputEvents>(log);
    std::shared_ptr<FakeClipboard> clipboard = std::make_shared<FakeClipboard>(log);
    std::shared_ptr<FakeSequenceClock> clock = std::make_shared<FakeSequenceClock>(log);

    Desktop desktop() const { return {screen, recognizer, elements, applications, input, clipboard, clock}; }
};

} // namespace morvane
