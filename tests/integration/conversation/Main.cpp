#include "ui/theme/MorvaneStyle.h"
#include "ui/theme/ThemeColors.h"

#include <QApplication>
#include <gmock/gmock.h>

/// The conversation's tests run on a screen that nobody sees, unless QT_QPA_PLATFORM names another.
int main(int argc, char **argv)
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    QApplication::setStyle(new morvane::MorvaneStyle);
    QApplication::setPalette(morvane::lightPalette());
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
