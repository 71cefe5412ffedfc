#pragma once

#include "async/OneShot.h"
#include "async/Outcome.h"
#include "async/Task.h"

#include <QThreadPool>
#include <type_traits>

namespace morvane {

/// Runs `work` on a thread of the global pool and resumes on the main thread with its result or its
/// exception. Watches no cancellation: once begun, the work runs to its end. `work` owns all that it uses.
template <class Work> Task<std::invoke_result_t<Work &>> runOffMain(Work work)
{
    OneShot<Outcome<std::invoke_result_t<Work &>>> done;
    QThreadPool::globalInstance()->start(
        [work = std::move(work), done]() mutable { done.resume(outcomeOf(work)); });
    auto outcome = co_await done.wait();
    co_return outcome.take();
}

} // namespace morvane
