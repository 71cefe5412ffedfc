#pragma once

#include "store/ConversationStore.h"
#include "support/RunTask.h"

#include <QCoreApplication>
#include <chrono>
#include <functional>
#include <stdexcept>
#include <thread>
#include <utility>

namespace morvane {

/// Waits until the disk has answered, without turning this thread's loop: nobody hears the answer meanwhile.
inline void awaitDisk(const ConversationStore &store)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!store.isIdle()) {
        if (std::chrono::steady_clock::now() >= deadline)
            throw std::runtime_error("the disk does not come to rest");
        std::this_thread::yield();
    }
}

/// Lets a reading that was asked for reach the disk and be answered; on a quick disk the answer may be heard.
inline void finishReadingUnheard(const ConversationStore &store)
{
    QCoreApplication::processEvents();
    awaitDisk(store);
}

inline Task<void> actOnceTheDiskHasAnswered(const ConversationStore *store, std::function<void()> action)
{
    awaitDisk(*store);
    action();
    co_return;
}

/// Does `action` between the disk's answer to the reading that was asked for just before, and its being
/// heard: both begin in the order of their asking. Very
/// rarely the answer is heard all the same, so a test may not expect that it was not.
inline void actOnUnheardReading(Scheduler &scheduler, const ConversationStore &store,
                                std::function<void()> action)
{
    runTask(scheduler, actOnceTheDiskHasAnswered(&store, std::move(action)));
}

} // namespace morvane
