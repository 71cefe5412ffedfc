#pragma once

#include "support/LogListener.h"
#include "ui/theme/MorvaneStyle.h"
#include "ui/theme/ThemeColors.h"

#include <QApplication>
#include <gmock/gmock.h>

namespace morvane {

/// Runs a program's tests of windows on a screen that nobody sees, unless QT_QPA_PLATFORM names another.
inline int runOffScreen(int argc, char **argv)
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setStyle(new MorvaneStyle);
    QApplication::setPalette(lightPalette());
    testing::InitGoogleMock(&argc, argv);
    watchTheLog();
    return RUN_ALL_TESTS();
}

} // namespace morvane
