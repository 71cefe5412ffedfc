#include "base/Log.h"

#include <cstdlib>
#include <cxxabi.h>
#include <memory>
#include <system_error>
#include <typeinfo>

namespace morvane {

QByteArray kindOfFailure(const std::exception &failure)
{
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> readable(
        abi::__cxa_demangle(typeid(failure).name(), nullptr, nullptr, &status), &std::free);
    QByteArray kind = readable ? readable.get() : typeid(failure).name();
    if (const auto *const system = dynamic_cast<const std::system_error *>(&failure))
        kind += ' ' + QByteArray::number(system->code().value());
    return kind;
}

QByteArray kindOfFailure(const std::exception_ptr &failure)
{
    try {
        std::rethrow_exception(failure);
    } catch (const std::exception &failure) {
        return kindOfFailure(failure);
    } catch (...) {
        return "no std::exception";
    }
}

QByteArray kindOfCurrentFailure()
{
    return kindOfFailure(std::current_exception());
}

} // namespace morvane
