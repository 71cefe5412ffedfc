#pragma once

#include "async/OneShot.h"
#include "async/Outcome.h"
#include "async/Task.h"

#include <QThreadPool>
#include <type_traits>

namespace morvane {

/// Runs `work` on a thread of `pool` and resumes on the main thread with its result or its exception. Watches
/// no cancellation: once begun, the work runs to its end. `work` owns all that it uses, or the pool's owner
/// waits for it.
template <class Work> Task<std::invoke_result_t<Work &>> runOn(QThreadPool *pool, Work work)
{
    OneShot<Outcome<std::invoke_result_t<Work &>>> done;
    pool->start([work = std::move(work), done]() mutable { done.resume(outcomeOf(work)); });
    auto outcome = co_await done.wait();
    co_return outcome.take();
}

/// As runOn, on the global pool: for work that may wait behind that of the tools.
template <class Work> Task<std::invoke_result_t<Work &>> runOffMain(Work work)
{
    return runOn(QThreadPool::globalInstance(), std::move(work));
}

} // namespace morvane
