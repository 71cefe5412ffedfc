#include "support/TestProgram.h"

#include "support/WaitUntil.h"

#include <QFile>
#include <csignal>
#include <optional>
#include <stdexcept>
#include <sys/prctl.h>
#include <unistd.h>

namespace morvane {

namespace {

/// In milliseconds; a program that looks for leaks at its end takes a while.
constexpr int patienceWithTheEnd = 10000;

} // namespace

TestProgram::TestProgram(const QString &program, const QStringList &arguments,
                         const QProcessEnvironment &environment, QString logPath)
    : m_logPath(std::move(logPath))
{
    m_process.setProcessEnvironment(environment);
    m_process.setStandardInputFile(QProcess::nullDevice());
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    m_process.setStandardOutputFile(m_logPath, QIODevice::Append);
    m_process.setChildProcessModifier([] {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        ::setpgid(0, 0);
    });
    m_process.start(program, arguments);
    if (!m_process.waitForStarted()) {
        throw std::runtime_error("cannot start " + program.toStdString() + ": " +
                                 m_process.errorString().toStdString());
    }
    m_pid = m_process.processId();
}

TestProgram::~TestProgram()
{
    end();
}

bool TestProgram::isRunning()
{
    // Looks by itself, so that it is right also where no event loop runs.
    return m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(0);
}

void TestProgram::end()
{
    if (isRunning()) {
        m_process.terminate();
        if (!m_process.waitForFinished(patienceWithTheEnd))
            kill();
    }
}

void TestProgram::kill()
{
    if (isRunning()) {
        ::kill(-pid_t(m_pid), SIGKILL);
        m_process.waitForFinished();
    }
}

std::optional<int> TestProgram::waitForExit()
{
    if (!waitUntil([this] { return !isRunning(); }) || m_process.exitStatus() != QProcess::NormalExit)
        return std::nullopt;
    return m_process.exitCode();
}

QString TestProgram::log() const
{
    QFile file(m_logPath);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

} // namespace morvane
