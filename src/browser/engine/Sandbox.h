#pragma once

#include <QString>

namespace morvane {

/// Why pages could not be kept in their sandbox here, in a sentence that begins small; empty where they can.
/// The engine would end the whole program.
QString sandboxProblem();

} // namespace morvane
