#pragma once

#include "store/ConversationStore.h"

#include <QCoreApplication>
#include <chrono>
#include <stdexcept>
#include <thread>

namespace morvane {

/// Lets a reading that was asked for reach the disk and be answered, but not the answer be heard: what the
/// test does next happens between the two.
inline void finishReadingUnheard(const ConversationStore &store)
{
    QCoreApplication::processEvents();
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!store.isIdle()) {
        if (std::chrono::steady_clock::now() >= deadline)
            throw std::runtime_error("the disk does not come to rest");
        std::this_thread::yield();
    }
}

} // namespace morvane
