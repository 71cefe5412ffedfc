#include "support/PrivateDesktop.h"

#include <QGuiApplication>
#include <gmock/gmock.h>

/// The tools act on a desktop of the tests' own, with programs that others wrote.
int main(int argc, char **argv)
{
    testing::InitGoogleMock(&argc, argv);
    if (testing::GTEST_FLAG(list_tests))
        return RUN_ALL_TESTS();
    const morvane::PrivateDesktop desktop;
    desktop.adopt();
    QGuiApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
