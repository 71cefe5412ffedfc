#pragma once

#include "support/LogListener.h"
#include "support/PrivateDesktop.h"

#include <gmock/gmock.h>

namespace morvane {

/// Runs the tests on a desktop of their own, which must be there before the application. Only to be listed,
/// they need none.
template <class Application> int runOnPrivateDesktop(int argc, char **argv)
{
    testing::InitGoogleMock(&argc, argv);
    if (testing::GTEST_FLAG(list_tests))
        return RUN_ALL_TESTS();
    const PrivateDesktop desktop;
    desktop.adopt();
    const Application application(argc, argv);
    watchTheLog();
    return RUN_ALL_TESTS();
}

} // namespace morvane
