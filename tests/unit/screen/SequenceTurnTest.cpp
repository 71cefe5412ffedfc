#include "tools/screen/SequenceTurn.h"

#include "tools/screen/InputControl.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

TEST(SequenceTurnTest, WhoIsStoppedWhileItWaitsDoesNotHaveItAndWhoComesNextWaitsAsWell)
{
    SequenceTurn turn;
    turn.lock({});
    std::stop_source stop;
    stop.request_stop();
    for (int one = 0; one < 2; ++one)
        EXPECT_THROW(turn.lock(stop.get_token()), SequenceStopped);
    turn.unlock();
    turn.lock({});
    EXPECT_THROW(turn.lock(stop.get_token()), SequenceStopped);
    turn.unlock();
}

} // namespace
} // namespace morvane
