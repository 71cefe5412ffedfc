#pragma once

#include <QString>
#include <exception>

namespace morvane {

/// The sentence that the user reads for a failure of a request. `error` must not be null.
QString friendlyError(const std::exception_ptr &error);

} // namespace morvane
