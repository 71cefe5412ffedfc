#pragma once

#include <exception>
#include <optional>
#include <type_traits>
#include <utility>
#include <variant>

namespace morvane {

/// How a computation ended: not yet, with a value, or with an exception.
template <class T> class Outcome {
    using Value = std::conditional_t<std::is_void_v<T>, std::monostate, T>;

public:
    bool isSet() const { return m_value || m_exception; }

    template <class... Arguments> void setValue(Arguments &&...arguments)
    {
        m_value.emplace(std::forward<Arguments>(arguments)...);
    }
    void setException(std::exception_ptr exception) { m_exception = std::move(exception); }

    /// Moves the value out, or throws the exception. Must be set.
    T take()
    {
        if (m_exception)
            std::rethrow_exception(m_exception);
        if constexpr (!std::is_void_v<T>)
            return std::move(*m_value);
    }

private:
    std::optional<Value> m_value;
    std::exception_ptr m_exception;
};

/// Runs `function` and keeps how it ended.
template <class Function> auto outcomeOf(Function &&function)
{
    using Result = std::invoke_result_t<Function &>;
    Outcome<Result> outcome;
    try {
        if constexpr (std::is_void_v<Result>) {
            function();
            outcome.setValue();
        } else {
            outcome.setValue(function());
        }
    } catch (...) {
        outcome.setException(std::current_exception());
    }
    return outcome;
}

} // namespace morvane
