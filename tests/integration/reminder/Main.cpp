#include "support/PrivateDesktop.h"

#include <QCoreApplication>
#include <gmock/gmock.h>

/// The delivering program needs a session bus, and its banners a desktop.
int main(int argc, char **argv)
{
    testing::InitGoogleMock(&argc, argv);
    if (testing::GTEST_FLAG(list_tests))
        return RUN_ALL_TESTS();
    const morvane::PrivateDesktop desktop;
    desktop.adopt();
    QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
