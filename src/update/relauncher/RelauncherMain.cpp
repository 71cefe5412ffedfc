// morvane-relauncher BUNDLE FOLDER: starts the program of the bundle when the process that descriptor 3
// stands for has ended, and removes the folder with the bundle that was there before. It outlives the program
// that starts it, and belongs to the version that goes.

#include "update/relauncher/Relaunch.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <string>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr int oldProcess = 3;

/// Whether the process that a descriptor stands for has ended, or ends within the time.
bool endsWithin(int process, milliseconds limit)
{
    const Clock::time_point end = Clock::now() + limit;
    while (true) {
        const auto left = std::chrono::ceil<milliseconds>(end - Clock::now()).count();
        pollfd wait{process, POLLIN, 0};
        const int found = ::poll(&wait, 1, left > 0 ? static_cast<int>(left) : 0);
        if (found >= 0 || errno != EINTR)
            return found > 0;
    }
}

/// The new program, started by and by.
class NewProgram {
public:
    explicit NewProgram(const std::string &bundle) : m_path(bundle + "/Contents/MacOS/Morvane") {}

    void start()
    {
        m_process = ::fork();
        if (m_process != 0)
            return;
        ::setsid();
        char *const arguments[]{m_path.data(), nullptr};
        ::execv(m_path.c_str(), arguments);
        ::_exit(cannotStart);
    }

    bool runs(milliseconds time)
    {
        if (m_process < 0)
            return false;
        const int process = static_cast<int>(::syscall(SYS_pidfd_open, m_process, 0));
        const bool hasEnded = endsWithin(process, time);
        ::close(process);
        int status = 0;
        if (!hasEnded || ::waitpid(m_process, &status, 0) != m_process)
            return true;
        return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

private:
    static constexpr int cannotStart = 127;

    std::string m_path;
    pid_t m_process = -1;
};

} // namespace

int main(int count, char **arguments)
{
    if (count != 3)
        return 2;
    ::fcntl(oldProcess, F_SETFD, FD_CLOEXEC);
    NewProgram program(arguments[1]);
    const std::filesystem::path remains(arguments[2]);
    return morvane::relaunch({
        .oldProcessEnds = [](milliseconds limit) { return endsWithin(oldProcess, limit); },
        .sleep = [](milliseconds time) { std::this_thread::sleep_for(time); },
        .removeOldBundle =
            [&remains] {
                std::error_code ignored; // the new program removes what is left at its start
                std::filesystem::remove_all(remains, ignored);
            },
        .startNewProgram = [&program] { program.start(); },
        .newProgramRuns = [&program](milliseconds time) { return program.runs(time); },
    });
}
