#include "support/LogListener.h"

#include <QGuiApplication>
#include <gmock/gmock.h>

/// Text needs fonts, so these tests run on a screen that nobody sees.
int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication application(argc, argv);
    testing::InitGoogleMock(&argc, argv);
    morvane::watchTheLog();
    return RUN_ALL_TESTS();
}
