#pragma once

#include "support/TemporaryHome.h"

#include <functional>
#include <string>
#include <vector>

namespace morvane {

/// One thing that a decoder that a file has taken over could try.
struct CageAttack {
    /// Whether it works without a cage depends on how the kernel was made, and on who runs the tests.
    enum class Outside { works, maybe };

    std::string name;
    std::function<bool()> succeeds; ///< Tries it in the process that calls; only system calls.
    Outside outside = Outside::works;
};

/// Files of a home folder that attacks are made on.
class AttackedHome {
public:
    AttackedHome();

    QByteArray key() const { return path("key"); }
    QByteArray path(const char *name) const;
    bool isUntouched() const;

private:
    TemporaryHome m_home;
};

inline constexpr auto secretKey = "sk-secret-key-of-the-user";

std::vector<CageAttack> attacksOnFiles(const AttackedHome &home);
/// `victim` is another process of the same user.
std::vector<CageAttack> attacksOnProcesses(pid_t victim);
std::vector<CageAttack> attacksOnTheSystem();

} // namespace morvane
