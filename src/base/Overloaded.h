#pragma once

namespace morvane {

/// Several lambdas as one function object, for std::visit: a case that no lambda takes does not compile.
template <class... Functions> struct Overloaded : Functions... {
    using Functions::operator()...;
};

} // namespace morvane
