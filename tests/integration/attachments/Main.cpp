#include "support/LogListener.h"

#include <QGuiApplication>
#include <gmock/gmock.h>

/// Drawing text into pictures and documents needs fonts, and fonts an application; nothing is shown.
int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication application(argc, argv);
    testing::InitGoogleMock(&argc, argv);
    morvane::watchTheLog();
    return RUN_ALL_TESTS();
}
