// Plays one scripted request through the real program on a display of its own, as a blind user would, and
// prints what was shown and what was spoken.
//
//   morvane-rehearsal PROGRAM PICTURE.png
//
// Ends with status 1 and a reason as soon as something does not happen.

#include "support/MorvaneSession.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <cstdio>
#include <stdexcept>

using namespace morvane;

namespace {

const auto request = QStringLiteral("How many hours has a leap year? Write it to two files.");

constexpr auto script = R"json({
  "title": "Hours in a leap year",
  "turns": [
    {"text": ["I will look at ", "the clock first."],
     "calls": [{"name": "get_current_datetime", "arguments": {}}]},
    {"text": "Now the multiplication.",
     "calls": [{"name": "calculate", "arguments": {"expression": "366 * 24"}}]},
    {"calls": [{"name": "write_file", "arguments": {"path": "~/hours.txt", "content": "8784 hours"}}]},
    {"calls": [{"name": "write_file", "arguments": {"path": "~/again.txt", "content": "8784 hours"}}]},
    {"text": ["A leap year has **8784 hours**:\n\n", "- 366 days\n- 24 hours each\n\n",
              "```python\nprint(366 * 24)\n```\n\nThe first file is written; ",
              "you did not want the second."]}
  ]
})json";

void print(const QString &heading, const QStringList &lines)
{
    std::printf("\n%s\n", qUtf8Printable(heading));
    for (QString line : lines) {
        std::printf("  %s\n", qUtf8Printable(line.replace(u'\n', QStringLiteral("\n  "))));
    }
    std::fflush(stdout);
}

void expect(bool happened, const QString &what)
{
    if (!happened) {
        throw std::runtime_error(what.toStdString());
    }
}

QStringList rowsOf(const AccessibleNode &tree)
{
    QStringList rows;
    tree.visit([&](const AccessibleNode &node) {
        if (node.name.startsWith(QLatin1String("You said ")) ||
            node.name.startsWith(QLatin1String("Morvane said "))) {
            rows.append(node.name);
        }
    });
    return rows;
}

/// Answers the sheet that asks whether the file may be written.
void answer(MorvaneSession &morvane, const QString &file, const QString &button)
{
    const QString asked = QStringLiteral("Morvane wants to write a file at ~/%1. Do you allow it?").arg(file);
    expect(morvane.ear().hears(asked), QStringLiteral("\"%1\" was not heard").arg(asked));
    morvane.program().find(button).press();
}

bool isWritten(const MorvaneSession &morvane, const QString &file)
{
    return QFileInfo::exists(morvane.home() + u'/' + file);
}

void play(MorvaneSession &morvane)
{
    morvane.start();
    morvane.send(request);
    const auto heardEarly = {QStringLiteral("Morvane is responding."),
                             QStringLiteral("Assistant is running: use the get_current_datetime tool."),
                             QStringLiteral("Assistant is running: use the calculate tool.")};
    for (const QString &text : heardEarly) {
        expect(morvane.ear().hears(text), QStringLiteral("\"%1\" was not heard").arg(text));
    }
    answer(morvane, QStringLiteral("hours.txt"), QStringLiteral("Allow the action"));
    answer(morvane, QStringLiteral("again.txt"), QStringLiteral("Deny the action"));
    const auto title = QStringLiteral("Conversation summarized as: Hours in a leap year.");
    expect(morvane.ear().hears(title), QStringLiteral("\"%1\" was not heard").arg(title));
    expect(morvane.hasStatus(QStringLiteral("Ready")), QStringLiteral("the status did not become \"Ready\""));
    const auto isAnswer = [](const AccessibleNode &node) {
        return node.name.startsWith(QLatin1String("Morvane said A leap year has"));
    };
    expect(morvane.program().shows(isAnswer), QStringLiteral("the answer is not in the conversation"));
    expect(morvane.activity().filter(QStringLiteral("calculate returned: The result is 8784.")).size() == 1,
           QStringLiteral("the result of the calculation is not in the activity log"));
    expect(isWritten(morvane, QStringLiteral("hours.txt")), QStringLiteral("the allowed file is not there"));
    expect(!isWritten(morvane, QStringLiteral("again.txt")), QStringLiteral("the denied file was written"));
    expect(morvane.storedConversations().size() == 1, QStringLiteral("the conversation is not on disk"));
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 3) {
        std::fputs("usage: morvane-rehearsal PROGRAM PICTURE.png\n", stderr);
        return 2;
    }
    int status = 0;
    try {
        const PrivateDesktop desktop;
        MorvaneSession morvane(desktop, QFileInfo(arguments.at(1)).absoluteFilePath(),
                               ModelScript::fromJson(script));
        try {
            play(morvane);
        } catch (const std::exception &error) {
            std::fprintf(stderr, "\nThe rehearsal failed: %s\n", error.what());
            status = 1;
        }
        if (morvane.isRunning()) {
            print(QStringLiteral("What the conversation shows:"), rowsOf(morvane.program().tree()));
            print(QStringLiteral("What the activity log shows:"), morvane.activity());
        }
        print(QStringLiteral("What a screen reader says:"), morvane.ear().heard());
        const bool isSaved = desktop.screenshot().save(arguments.at(2));
        std::printf("\nPicture: %s\n", isSaved ? qUtf8Printable(arguments.at(2)) : "could not be written");
        if (!isSaved) {
            status = 1;
        }
    } catch (const std::exception &error) {
        std::fprintf(stderr, "The rehearsal failed: %s\n", error.what());
        return 1;
    }
    std::puts(status == 0 ? "The rehearsal went through." : "The rehearsal did not go through.");
    return status;
}
