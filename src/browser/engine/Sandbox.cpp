#include "browser/engine/Sandbox.h"

#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

bool mayMakeUserNamespaces()
{
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(::unshare(CLONE_NEWUSER) == 0 ? 0 : 1);
    int status = 1;
    return child > 0 && ::waitpid(child, &status, 0) == child && WIFEXITED(status) &&
           WEXITSTATUS(status) == 0;
}

} // namespace

QString sandboxProblem()
{
    if (qEnvironmentVariableIsSet("QTWEBENGINE_DISABLE_SANDBOX"))
        return {};
    if (::geteuid() == 0)
        return u"the built-in browser does not run for the user root, whom it could not protect from pages."_s;
    if (!mayMakeUserNamespaces())
        return u"the built-in browser needs user namespaces to protect you from pages, and this system does not allow them."_s;
    return {};
}

} // namespace morvane
