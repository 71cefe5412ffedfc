// What looking at the screen costs: a capture of a full HD screen full of small text, the recognition alone
// beside the command "tesseract" and how many of the words each finds, the walk of a program's elements, a
// program in front that hangs, and the memory that stays. Prints JSON. Arguments choose cases by name:
// capture, recognition, tesseract, elements, frozen.

#include "Median.h"
#include "ProcMegabytes.h"

#include "async/Scheduler.h"
#include "async/SystemClock.h"
#include "base/InstalledFiles.h"
#include "platform/linux/desktop/LinuxAccessibilityTree.h"
#include "platform/linux/desktop/LinuxApplications.h"
#include "platform/linux/desktop/LinuxClipboard.h"
#include "platform/linux/desktop/LinuxInputEvents.h"
#include "platform/linux/desktop/LinuxScreenCapture.h"
#include "platform/linux/desktop/LinuxTextRecognizer.h"
#include "support/PrivateDesktop.h"
#include "support/RunTask.h"
#include "tools/screen/ElementWalk.h"
#include "tools/screen/RealSequenceClock.h"
#include "tools/screen/ScreenTools.h"

#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <csignal>
#include <cstdio>
#include <sys/resource.h>

using namespace Qt::StringLiterals;

using namespace morvane;

namespace {

constexpr int runs = 7;
constexpr int runsOfOthers = 1; // which take half a minute each
constexpr QSize screenSize{1920, 1080};
constexpr int textLines = 64;
constexpr int wordsInLine = 24;
constexpr int fields = 100; // each with a label and a container: 300 elements

/// The words of an ordinary text that lies on every Debian, so that as many stand twice as people write
/// twice.
QStringList sampleWords()
{
    QFile file(u"/usr/share/common-licenses/GPL-3"_s);
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("no text to show");
    static const QRegularExpression blanks(u"\\s+"_s);
    const QStringList words = QString::fromUtf8(file.readAll()).split(blanks, Qt::SkipEmptyParts);
    return words.first(textLines * wordsInLine);
}

/// How many of the words a recognised text has, in percent.
double foundPercent(const QStringList &wanted, const QString &text)
{
    QHash<QString, int> seen;
    static const QRegularExpression blanks(u"\\s+"_s);
    for (const QString &word : text.split(blanks))
        ++seen[word];
    int found = 0;
    for (const QString &word : wanted)
        if (--seen[word] >= 0)
            ++found;
    return 100.0 * found / double(wanted.size());
}

/// A program in front of the others.
class Front {
public:
    Front(const QString &program, const QStringList &arguments, const QString &log)
        : m_program(program, arguments, QProcessEnvironment::systemEnvironment(), log)
    {
        if (!waitUntil([this] {
                const auto front = LinuxApplications().frontmost({});
                return front && front->pid == m_program.pid();
            }))
            throw std::runtime_error("no window: " + m_program.log().toStdString());
    }

    pid_t pid() const { return pid_t(m_program.pid()); }

private:
    TestProgram m_program;
};

/// What the programs that have been waited for took of the processors, in milliseconds.
double processorTimeOfOthers()
{
    rusage usage{};
    ::getrusage(RUSAGE_CHILDREN, &usage);
    const auto milliseconds = [](const timeval &time) {
        return double(time.tv_sec) * 1e3 + double(time.tv_usec) / 1e3;
    };
    return milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime);
}

class ScreenBench {
public:
    /// `cases` by name; all if there is none.
    explicit ScreenBench(const QStringList &cases) : m_cases(cases) {}

    void run()
    {
        if (isChosen("capture") || isChosen("recognition") || isChosen("tesseract"))
            measureText();
        if (isChosen("elements") || isChosen("frozen"))
            measureForm();
        std::printf("{%s}\n", m_results.join(", "_L1).toUtf8().constData());
    }

private:
    bool isChosen(const char *name) const
    {
        return m_cases.isEmpty() || m_cases.contains(QLatin1String(name));
    }

    void tell(const char *name, double value)
    {
        m_results.append(u"\"%1\": %2"_s.arg(QLatin1String(name)).arg(value, 0, 'f', 1));
    }

    QString capture() { return runTask(m_scheduler, m_tools.captureScreen(), std::chrono::seconds(60)).text; }

    void measureText()
    {
        const QStringList words = sampleWords();
        QFile file(m_folder.filePath(u"text"_s));
        if (!file.open(QIODevice::WriteOnly))
            throw std::runtime_error("no file");
        for (int line = 0; line < textLines; ++line)
            file.write(words.mid(line * wordsInLine, wordsInLine).join(u' ').toUtf8() + '\n');
        file.close();
        const Front terminal(u"xterm"_s,
                             {u"-fullscreen"_s, u"-fa"_s, u"DejaVu Sans Mono"_s, u"-fs"_s, u"9"_s, u"-e"_s,
                              u"sh"_s, u"-c"_s,
                              u"until [ $(stty size | cut -d' ' -f2) -gt 200 ]; do sleep 0.1; done; cat "_s +
                                  file.fileName() + u"; sleep 600"_s},
                             m_folder.filePath(u"xterm.log"_s));
        const double memory = procMegabytes(u"self"_s, "smaps_rollup", "Pss");
        waitUntil([&] { return foundPercent(words, capture()) > 50; });
        tell("words", double(words.size()));
        if (isChosen("capture")) {
            measureCapture(words);
            tell("memory_left_mb", procMegabytes(u"self"_s, "smaps_rollup", "Pss") - memory);
        }
        const QImage image = LinuxScreenCapture().capture(QRect(QPoint(), screenSize), {});
        if (isChosen("recognition")) {
            const double before = processorTimeOfOthers();
            tell("recognition_ms",
                 medianMilliseconds(runs, [&] { LinuxTextRecognizer(m_recognizer).recognize(image, {}); }));
            tell("recognition_processor_ms", (processorTimeOfOthers() - before) / runs);
        }
        if (isChosen("tesseract"))
            measureTesseract(image, words);
    }

    void measureCapture(const QStringList &words)
    {
        QString text;
        tell("capture_ms", medianMilliseconds(runs, [&] { text = capture(); }));
        tell("words_found_percent", foundPercent(words, text));
        tell("picture_ms",
             medianMilliseconds(runs, [] { LinuxScreenCapture().capture(QRect(QPoint(), screenSize), {}); }));
    }

    /// The command of the same library, as it comes.
    void measureTesseract(const QImage &image, const QStringList &words)
    {
        const QString path = m_folder.filePath(u"screen.png"_s);
        image.save(path);
        QString text;
        tell("tesseract_ms", medianMilliseconds(runsOfOthers, [&] {
                 QProcess tesseract;
                 tesseract.start(u"tesseract"_s, {path, u"-"_s, u"--psm"_s, u"11"_s});
                 tesseract.waitForFinished(120'000);
                 text = QString::fromUtf8(tesseract.readAllStandardOutput());
             }));
        tell("tesseract_found_percent", foundPercent(words, text));
    }

    void measureForm()
    {
        QStringList arguments{u"--form"_s, u"--columns=5"_s, u"--button=Leave:0"_s};
        for (int field = 0; field < fields; ++field)
            arguments.append(u"--field=Field %1"_s.arg(field));
        const Front form(u"yad"_s, arguments, m_folder.filePath(u"yad.log"_s));
        LinuxAccessibilityTree tree(m_carrier);
        tree.enable();
        qsizetype found = 0;
        const auto walk = [&] {
            const QDeadlineTimer deadline(1500);
            const auto program = tree.application(form.pid(), deadline);
            found = program ? ElementWalk(tree, deadline, {}).find(*program).size() : 0;
        };
        waitUntil([&] {
            walk();
            return found >= fields;
        });
        if (isChosen("elements")) {
            tell("walk_ms", medianMilliseconds(runs, walk));
            tell("clickable_elements", double(found));
        }
        if (isChosen("frozen")) {
            ::kill(form.pid(), SIGSTOP);
            tell("capture_of_a_frozen_program_ms", medianMilliseconds(runs, [&] { capture(); }));
            ::kill(form.pid(), SIGCONT);
        }
    }

    const QStringList m_cases;
    QStringList m_results;
    QTemporaryDir m_folder;
    SystemClock m_clock;
    Scheduler m_scheduler{m_clock};
    const QString m_carrier = InstalledFiles::aroundProgram().helper(u"morvane-action-carrier"_s);
    const QString m_recognizer = InstalledFiles::aroundProgram().helper(u"morvane-text-recognizer"_s);
    ScreenTools m_tools{{std::make_shared<LinuxScreenCapture>(),
                         std::make_shared<LinuxTextRecognizer>(m_recognizer),
                         std::make_shared<LinuxAccessibilityTree>(m_carrier),
                         std::make_shared<LinuxApplications>(), std::make_shared<LinuxInputEvents>(),
                         std::make_shared<LinuxClipboard>(), std::make_shared<RealSequenceClock>()}};
};

} // namespace

int main(int argc, char **argv)
{
    const PrivateDesktop desktop(screenSize);
    desktop.adopt();
    const QGuiApplication application(argc, argv);
    ScreenBench(QCoreApplication::arguments().mid(1)).run();
    return 0;
}
