// Plays one scripted request through the real program on a display of its own, as a blind user would, and
// prints what was shown and what was spoken.
//
//   morvane-rehearsal [--browser] PROGRAM PICTURE.png
//
// --browser has it open a page, too, and looks whether that is kept in its sandbox. Not as root.
// Ends with status 1 and a reason as soon as something does not happen.

#include "support/MorvaneSession.h"
#include "support/PageServer.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <unistd.h>

using namespace Qt::StringLiterals;

using namespace morvane;

namespace {

const auto request = u"How many hours has a leap year? Write it to two files."_s;

constexpr auto browserTurn = R"json(
    {"text": "I will see what others say.",
     "calls": [{"name": "browser_open", "arguments": {"url": "%1"}}]},)json"_L1;

constexpr auto script = R"json({
  "title": "Hours in a leap year",
  "turns": [
    {"text": ["I will look at ", "the clock first."],
     "calls": [{"name": "get_current_datetime", "arguments": {}}]},
    {"text": "Now the multiplication.",
     "calls": [{"name": "calculate", "arguments": {"expression": "366 * 24"}}]},%1
    {"calls": [{"name": "write_file", "arguments": {"path": "~/hours.txt", "content": "8784 hours"}}]},
    {"calls": [{"name": "write_file", "arguments": {"path": "~/again.txt", "content": "8784 hours"}}]},
    {"text": ["A leap year has **8784 hours**:\n\n", "- 366 days\n- 24 hours each\n\n",
              "```python\nprint(366 * 24)\n```\n\nThe first file is written; ",
              "you did not want the second."]}
  ]
})json"_L1;

void print(const QString &heading, const QStringList &lines)
{
    std::printf("\n%s\n", qUtf8Printable(heading));
    for (QString line : lines)
        std::printf("  %s\n", qUtf8Printable(line.replace(u'\n', u"\n  "_s)));
    std::fflush(stdout);
}

void expect(bool happened, const QString &what)
{
    if (!happened)
        throw std::runtime_error(what.toStdString());
}

QStringList rowsOf(const AccessibleNode &tree)
{
    QStringList rows;
    tree.visit([&](const AccessibleNode &node) {
        if (node.name.startsWith("You said "_L1) || node.name.startsWith("Morvane said "_L1))
            rows.append(node.name);
    });
    return rows;
}

/// Answers the sheet that asks whether the file may be written.
void answer(MorvaneSession &morvane, const QString &file, const QString &button)
{
    const QString asked = u"Morvane wants to write a file at ~/%1. Do you allow it?"_s.arg(file);
    expect(morvane.ear().hears(asked), u"\"%1\" was not heard"_s.arg(asked));
    morvane.program().find(button).press();
}

bool isWritten(const MorvaneSession &morvane, const QString &file)
{
    return QFileInfo::exists(morvane.home() + u'/' + file);
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Whether the process with the web page has process numbers of its own and may not make every system call.
bool isSandboxed(const QString &process)
{
    const QList<QByteArray> status = contentOf(u"/proc/%1/status"_s.arg(process)).split('\n');
    const bool hasOwnNumbers = std::ranges::any_of(status, [](const QByteArray &line) {
        return line.startsWith("NSpid:") && line.simplified().count(' ') > 1;
    });
    return hasOwnNumbers && status.contains("Seccomp:\t2");
}

/// The processes of the web engine that hold pages, of those that a program has started.
QStringList pageProcesses(qint64 program)
{
    QStringList found = QDir(u"/proc"_s).entryList(QDir::Dirs);
    found.removeIf([program](const QString &process) {
        return ::getpgid(process.toInt()) != program ||
               !contentOf(u"/proc/%1/cmdline"_s.arg(process)).contains("--type=renderer");
    });
    return found;
}

void expectPage(MorvaneSession &morvane)
{
    expect(morvane.program().shows(u"Browser content: Birds"_s), u"the page is not shown"_s);
    const QStringList processes = pageProcesses(morvane.program().process().pid());
    expect(!processes.isEmpty(), u"no process has the page"_s);
    for (const QString &process : processes)
        expect(isSandboxed(process), u"process %1 with the page is not in its sandbox"_s.arg(process));
    print(u"Processes with pages, in their sandbox:"_s, processes);
}

void play(MorvaneSession &morvane, bool opensPage)
{
    morvane.start();
    morvane.send(request);
    const auto heardEarly = {u"Morvane is responding."_s,
                             u"Assistant is running: use the get_current_datetime tool."_s,
                             u"Assistant is running: use the calculate tool."_s};
    for (const QString &text : heardEarly)
        expect(morvane.ear().hears(text), u"\"%1\" was not heard"_s.arg(text));
    answer(morvane, u"hours.txt"_s, u"Allow the action"_s);
    answer(morvane, u"again.txt"_s, u"Deny the action"_s);
    const auto title = u"Conversation summarized as: Hours in a leap year."_s;
    expect(morvane.ear().hears(title), u"\"%1\" was not heard"_s.arg(title));
    expect(morvane.hasStatus(u"Ready"_s), u"the status did not become \"Ready\""_s);
    const auto isAnswer = [](const AccessibleNode &node) {
        return node.name.startsWith("Morvane said A leap year has"_L1);
    };
    expect(morvane.program().shows(isAnswer), u"the answer is not in the conversation"_s);
    expect(morvane.activity().filter(u"calculate returned: The result is 8784."_s).size() == 1,
           u"the result of the calculation is not in the activity log"_s);
    expect(isWritten(morvane, u"hours.txt"_s), u"the allowed file is not there"_s);
    expect(!isWritten(morvane, u"again.txt"_s), u"the denied file was written"_s);
    expect(morvane.storedConversations().size() == 1, u"the conversation is not on disk"_s);
    if (opensPage)
        expectPage(morvane);
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption browser(u"browser"_s);
    parser.addOption(browser);
    const bool isUnderstood = parser.parse(QCoreApplication::arguments());
    const QStringList arguments = parser.positionalArguments();
    if (!isUnderstood || arguments.size() != 2) {
        std::fputs("usage: morvane-rehearsal [--browser] PROGRAM PICTURE.png\n", stderr);
        return 2;
    }
    const bool opensPage = parser.isSet(browser);
    int status = 0;
    try {
        PageServer site;
        site.page(u"/birds"_s, "<title>Birds</title><h1>Kingfishers</h1><p>A kingfisher eats fish.</p>");
        const QString turn =
            opensPage ? QString(browserTurn).arg(site.url(u"/birds"_s).toString()) : QString();
        const PrivateDesktop desktop;
        MorvaneSession morvane(desktop, QFileInfo(arguments.at(0)).absoluteFilePath(),
                               ModelScript::fromJson(QString(script).arg(turn).toStdString()));
        try {
            play(morvane, opensPage);
        } catch (const std::exception &error) {
            std::fprintf(stderr, "\nThe rehearsal failed: %s\n", error.what());
            print(u"What the program logged:"_s, {morvane.program().process().log()});
            status = 1;
        }
        if (morvane.isRunning()) {
            print(u"What the conversation shows:"_s, rowsOf(morvane.program().tree()));
            print(u"What the activity log shows:"_s, morvane.activity());
        }
        print(u"What a screen reader says:"_s, morvane.ear().heard());
        const bool isSaved = desktop.screenshot().save(arguments.at(1));
        std::printf("\nPicture: %s\n", isSaved ? qUtf8Printable(arguments.at(1)) : "could not be written");
        if (!isSaved)
            status = 1;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "The rehearsal failed: %s\n", error.what());
        return 1;
    }
    std::puts(status == 0 ? "The rehearsal went through." : "The rehearsal did not go through.");
    return status;
}
