#include "tools/ShellTool.h"

#include "async/OneShot.h"
#include "base/Text.h"
#include "tools/ShellThread.h"

using namespace Qt::StringLiterals;

namespace morvane {

ShellTool::ShellTool(QByteArray shell, const ShellLimits &limits)
    : m_shell(std::move(shell)), m_limits(limits)
{
}

ShellTool::~ShellTool() = default;

Task<QString> ShellTool::runShell(QString command)
{
    command = trimmed(command);
    if (command.isEmpty())
        co_return u"Error: empty command."_s;
    // The system would cut the command off there and run another one than the user has seen.
    if (command.contains(QChar(u'\0')))
        co_return u"Error starting the command: it holds a NUL character"_s;
    if (!m_thread)
        m_thread = std::make_unique<ShellThread>(m_shell, m_limits);
    OneShot<QString> answer;
    m_thread->run(command, answer);
    co_return co_await answer.wait();
}

} // namespace morvane
