#include "support/PrivateDesktop.h"

#include <QApplication>
#include <gmock/gmock.h>

/// The windows of these tests stand on a desktop of their own, which must be there before the application.
int main(int argc, char **argv)
{
    testing::InitGoogleMock(&argc, argv);
    if (testing::GTEST_FLAG(list_tests))
        return RUN_ALL_TESTS();
    const morvane::PrivateDesktop desktop;
    desktop.adopt();
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    return RUN_ALL_TESTS();
}
