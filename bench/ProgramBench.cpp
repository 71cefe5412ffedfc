// The whole program with its window open, measured from outside on a private desktop against the scripted
// model: start, idle cost, tool turns and a long stream. Prints JSON. Usage: ProgramBench [PROGRAM]
// ProgramBench --compare PROGRAM OTHER starts the two in turn, such as one whose tree lacks a part.

#include "ProcMegabytes.h"

#include "base/Uuid.h"
#include "support/Keyboard.h"
#include "support/PrivateDesktop.h"
#include "support/ScriptedModel.h"
#include "support/TestProgram.h"
#include "support/XConnection.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QThread>
#include <algorithm>
#include <cstdio>
#include <unistd.h>
#include <vector>

using namespace Qt::StringLiterals;

using namespace morvane;

namespace {

constexpr int starts = 9;
constexpr int comparedStarts = 15;
constexpr int comparedIdleSeconds = 5;
constexpr int loopTurns = 20;
constexpr std::size_t burstTokens = 100000;
constexpr int idleSeconds = 10;
constexpr int toolServers = 10; // each of which takes a second to shake hands

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

double cpuSeconds(qint64 pid)
{
    QFile proc(u"/proc/%1/stat"_s.arg(pid));
    if (!proc.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray text = proc.readAll();
    const auto fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
    return (fields[11].toDouble() + fields[12].toDouble()) / double(sysconf(_SC_CLK_TCK));
}

/// A process of this name (its first 15 bytes); 0 if there is none.
qint64 processNamed(const QByteArray &name)
{
    for (const QString &pid : QDir(u"/proc"_s).entryList(QDir::Dirs)) {
        QFile proc(u"/proc/%1/comm"_s.arg(pid));
        if (proc.open(QIODevice::ReadOnly) && proc.readAll().trimmed() == name)
            return pid.toLongLong();
    }
    return 0;
}

/// What the threads that run now have used, to the nanosecond.
double threadSeconds(qint64 pid)
{
    double nanoseconds = 0;
    QDirIterator threads(u"/proc/%1/task"_s.arg(pid), QDir::Dirs | QDir::NoDotAndDotDot);
    while (threads.hasNext()) {
        QFile proc(threads.next() + u"/schedstat"_s);
        if (proc.open(QIODevice::ReadOnly))
            nanoseconds += proc.readAll().split(' ').first().toDouble();
    }
    return nanoseconds / 1e9;
}

/// The program in a home of its own beside a scripted model.
class Session {
public:
    Session(const PrivateDesktop &desktop, QString program, ModelScript script,
            const QByteArray &moreSettings = {})
        : m_desktop(desktop), m_program(std::move(program)), m_model(std::move(script)),
          m_screen(desktop.display()), m_keyboard(m_screen), m_home(desktop.newFolder(u"home"_s))
    {
        QDir(m_home).mkpath(u"config/Morvane"_s);
        QFile settings(m_home + u"/config/Morvane/Morvane.conf"_s);
        if (!settings.open(QIODevice::WriteOnly))
            qFatal("cannot write the settings");
        settings.write(
            "[General]\nprovider=custom\nmodel=scripted\nmaxSteps=200\nhasCompletedOnboarding=true\n"
            "customBaseURL=" +
            QByteArray::fromStdString(m_model.baseURL()) + "/v1\n" + moreSettings);
    }

    /// Has the program start with so many tool servers.
    void setToolServers(int count)
    {
        const QString folder = m_home + u"/data/Morvane"_s;
        QDir().mkpath(folder);
        QStringList records;
        for (int server = 0; server < count; ++server)
            records.append(
                uR"({"id":"%1","name":"Server %2","transport":"stdio","command":"%3 --slow 1","args":[],)"
                "\"url\":\"\",\"enabled\":true}"_s.arg(uuidText(newUuid()), QString::number(server),
                                                       QFileInfo(m_program).path() +
                                                           u"/scripted-tool-server"_s));
        QFile list(folder + u"/mcp-servers.json"_s);
        if (!list.open(QIODevice::WriteOnly))
            qFatal("cannot write the list of tool servers");
        list.write((u'[' + records.join(u',') + u']').toUtf8());
    }

    ScriptedModel &model() { return m_model; }
    qint64 pid() const { return m_process->pid(); }
    void end() { m_process.reset(); }

    /// Starts the program; milliseconds until its window has the focus and has painted its ground.
    double start()
    {
        QProcessEnvironment environment = m_desktop.environment();
        environment.insert(u"HOME"_s, m_home);
        environment.insert(u"XDG_CONFIG_HOME"_s, m_home + u"/config"_s);
        environment.insert(u"XDG_DATA_HOME"_s, m_home + u"/data"_s);
        while (hasWindow())
            QThread::msleep(1);
        QElapsedTimer timer;
        timer.start();
        m_process = std::make_unique<TestProgram>(m_program, QStringList(), environment, m_home + u"/log"_s);
        while (!hasWindow() || !isPainted())
            QThread::usleep(500);
        return double(timer.nsecsElapsed()) / 1e6;
    }

    /// Types a request; milliseconds until it reaches the model.
    double ask(const QString &text)
    {
        const std::size_t before = m_model.requests().size();
        QElapsedTimer timer;
        timer.start();
        m_keyboard.type(text);
        m_keyboard.press(u"Return"_s);
        // A request that still ends keeps the draft; it goes with the next Return.
        for (int tries = 0; !m_model.waitForRequests(before + 1, std::chrono::seconds(1)); ++tries) {
            if (tries == 10)
                qFatal("the request never came");
            m_keyboard.press(u"Return"_s);
        }
        return double(timer.nsecsElapsed()) / 1e6;
    }

    qint64 largestConversation() const
    {
        qint64 largest = 0;
        for (const QFileInfo &file : QDir(m_home + u"/data/Morvane/Conversations"_s).entryInfoList())
            largest = std::max(largest, file.size());
        return largest;
    }

private:
    bool hasWindow() const { return !m_screen.property(m_screen.root(), "_NET_CLIENT_LIST").isEmpty(); }

    bool isPainted() const
    {
        const QImage screen = m_screen.screenshot();
        const QColor middle = screen.pixelColor(screen.width() / 2, screen.height() / 2);
        return middle.lightness() > 128;
    }

    const PrivateDesktop &m_desktop;
    QString m_program;
    ScriptedModel m_model;
    XConnection m_screen;
    Keyboard m_keyboard;
    QString m_home;
    std::unique_ptr<TestProgram> m_process;
};

ModelScript script()
{
    ModelScript script;
    script.turns.push_back(ScriptedTurn::saying({"warm"}));
    for (int turn = 0; turn < loopTurns; ++turn) {
        ScriptedCall call;
        call.name = "read_file";
        call.argumentFragments = {R"({"path":"/etc/debian_version","n":)" + std::to_string(turn) + "}"};
        call.id = "call_" + std::to_string(turn);
        script.turns.push_back(ScriptedTurn::calling({call}));
    }
    script.turns.push_back(ScriptedTurn::saying({"done"}));
    ScriptedTurn burst;
    burst.steps = {step::Burst{burstTokens}};
    script.turns.push_back(burst);
    script.afterwards = ScriptedTurn::saying({"ok"});
    return script;
}

/// How many tools of tool servers a request offers.
std::size_t offeredServerTools(const ScriptedRequest &request)
{
    std::size_t count = 0;
    for (const boost::json::value &tool : request.json.at("tools").as_array())
        count += tool.at("function").at("name").as_string().starts_with("mcp_") ? 1 : 0;
    return count;
}

/// In turn, so that both programs meet the machine as it is.
int compare(const QStringList &programs)
{
    struct Found {
        std::vector<double> painted;
        std::vector<double> pss;
        std::vector<double> own;
    };
    const PrivateDesktop desktop;
    std::vector<Found> found(std::size_t(programs.size()));
    for (int start = 0; start < comparedStarts; ++start) {
        for (std::size_t place = 0; place < found.size(); ++place) {
            Session session(desktop, programs.at(qsizetype(place)), script());
            found[place].painted.push_back(session.start());
            QThread::sleep(comparedIdleSeconds);
            const QString pid = QString::number(session.pid());
            found[place].pss.push_back(procMegabytes(pid, "smaps_rollup", "Pss"));
            found[place].own.push_back(procMegabytes(pid, "smaps_rollup", "Private_Dirty"));
            session.end();
        }
    }
    for (std::size_t place = 0; place < found.size(); ++place)
        std::printf("{\"program\": \"%s\", \"start_to_painted_ms\": {\"median\": %.1f, \"min\": %.1f}, "
                    "\"idle\": {\"pss_mb\": %.2f, \"own_mb\": %.2f}}\n",
                    qUtf8Printable(programs.at(qsizetype(place))), median(found[place].painted),
                    *std::min_element(found[place].painted.begin(), found[place].painted.end()),
                    median(found[place].pss), median(found[place].own));
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == "--compare"_L1 && arguments.size() == 4)
        return compare(arguments.sliced(2));
    const QString program =
        argc > 1 ? QString::fromLocal8Bit(argv[1]) : QCoreApplication::applicationDirPath() + u"/morvane"_s;
    const PrivateDesktop desktop;

    std::vector<double> painted;
    std::vector<double> firstRequests;
    std::vector<double> paintedWithServers;
    std::vector<double> firstRequestsWithServers;
    std::size_t mostOffered = 0;
    {
        ModelScript always;
        always.afterwards = ScriptedTurn::saying({"ok"});
        Session session(desktop, program, always);
        // In turn, so that both meet the machine as it is.
        for (int start = 0; start < starts; ++start) {
            session.setToolServers(0);
            painted.push_back(session.start());
            firstRequests.push_back(session.ask(u"hi"_s));
            session.end();
            session.setToolServers(toolServers);
            paintedWithServers.push_back(session.start());
            const std::size_t before = session.model().requests().size();
            firstRequestsWithServers.push_back(session.ask(u"hi"_s));
            mostOffered = std::max(mostOffered, offeredServerTools(session.model().requests().at(before)));
            session.end();
        }
    }

    double watchingCpu = 0;
    double waiterPss = 0;
    {
        Session session(
            desktop, program, script(),
            "pendingReminders=\"@ByteArray([{\\\"id\\\":\\\"0A1B2C3D-0000-4000-8000-000000000001\\\","
            "\\\"message\\\":\\\"tea\\\",\\\"fireDate\\\":4e9}])\"\n");
        session.start();
        QThread::sleep(idleSeconds);
        const double before = threadSeconds(session.pid());
        QThread::sleep(idleSeconds);
        watchingCpu = (threadSeconds(session.pid()) - before) / idleSeconds * 100;
        waiterPss = procMegabytes(QString::number(processNamed("morvane-reminde")), "smaps_rollup", "Pss");
        session.end();
    }

    Session session(desktop, program, script());
    session.start();
    QThread::sleep(idleSeconds);
    const double idleBefore = threadSeconds(session.pid());
    QThread::sleep(idleSeconds);
    const double idleCpu = (threadSeconds(session.pid()) - idleBefore) / idleSeconds * 100;
    const double idlePss = procMegabytes(QString::number(session.pid()), "smaps_rollup", "Pss");

    // The first request also asks for a title.
    session.ask(u"warm"_s);
    session.model().waitForRequests(2);
    session.ask(u"loop"_s);
    session.model().waitForRequests(2 + loopTurns + 1);
    std::vector<double> turnTimes;
    for (const ScriptedRequest &request : session.model().requests())
        if (request.turn > 1 && request.turn <= loopTurns + 1)
            turnTimes.push_back(double(request.sinceLastAnswer.count()) / 1000);
    const double peak = procMegabytes(QString::number(session.pid()), "status", "VmHWM");
    const double loopPss = procMegabytes(QString::number(session.pid()), "smaps_rollup", "Pss");

    const double cpuBefore = cpuSeconds(session.pid());
    session.ask(u"stream"_s);
    QElapsedTimer stream;
    stream.start();
    // The answer is saved when the run has ended; a word of the burst takes more than four bytes.
    while (session.largestConversation() < qint64(burstTokens) * 4 && stream.elapsed() < 60000)
        QThread::usleep(500);
    const double streamSeconds = double(stream.nsecsElapsed()) / 1e9;
    const double cpu = cpuSeconds(session.pid()) - cpuBefore;

    std::printf("{\"start_to_painted_ms\": {\"median\": %.1f, \"max\": %.1f},\n"
                " \"typed_to_first_request_ms\": {\"median\": %.1f},\n"
                " \"with_ten_tool_servers\": {\"start_to_painted_ms\": {\"median\": %.1f, \"max\": %.1f}, "
                "\"typed_to_first_request_ms\": {\"median\": %.1f, \"max\": %.1f}, "
                "\"their_tools_in_it\": %zu},\n"
                " \"idle\": {\"pss_mb\": %.1f, \"cpu_percent\": %.3f},\n"
                " \"idle_with_a_reminder\": {\"cpu_percent\": %.3f, \"waiting_program_pss_mb\": %.1f},\n"
                " \"tool_turn_ms\": {\"p50\": %.2f, \"max\": %.2f, \"turns\": %zu, \"peak_rss_mb\": %.1f, "
                "\"pss_mb\": %.1f},\n"
                " \"stream\": {\"tokens\": %zu, \"seconds_until_saved\": %.3f, \"tokens_per_second\": %.0f, "
                "\"cpu_s\": %.2f}}\n",
                median(painted), *std::max_element(painted.begin(), painted.end()), median(firstRequests),
                median(paintedWithServers),
                *std::max_element(paintedWithServers.begin(), paintedWithServers.end()),
                median(firstRequestsWithServers),
                *std::max_element(firstRequestsWithServers.begin(), firstRequestsWithServers.end()),
                mostOffered, idlePss, idleCpu, watchingCpu, waiterPss, median(turnTimes),
                *std::max_element(turnTimes.begin(), turnTimes.end()), turnTimes.size(), peak, loopPss,
                burstTokens, streamSeconds, double(burstTokens) / streamSeconds, cpu);
    return 0;
}
