#pragma once

#include "localmodel/InstallError.h"
#include "support/FakeClock.h"
#include "support/RunTask.h"

#include <gtest/gtest.h>

namespace morvane {

/// Fails unless `task`, which waits on `clock`, goes on for a second less than `limit` and then ends with
/// `message`.
template <class T>
void expectTimeLimit(FakeClock &clock, TaskHandle<T> &task, std::chrono::seconds limit,
                     const QString &message)
{
    clock.advance(limit - std::chrono::seconds(1));
    settle();
    EXPECT_FALSE(task.done());
    clock.advance(std::chrono::seconds(1));
    ASSERT_TRUE(waitUntil([&task] { return task.done(); }));
    try {
        task.result();
        ADD_FAILURE() << "it ended well";
    } catch (const InstallError &error) {
        EXPECT_EQ(error.message(), message);
    }
}

} // namespace morvane
