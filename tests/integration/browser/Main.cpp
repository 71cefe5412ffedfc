#include "support/RunOnPrivateDesktop.h"

#include <QApplication>

/// The real engine, on a desktop of the tests' own. As root it runs without its sandbox. It paints without
/// OpenGL, which is twice the work where a processor does it.
int main(int argc, char **argv)
{
    qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
    qputenv("QT_QUICK_BACKEND", "software");
    // Sites of several names, all of them here, and one that is nowhere.
    qputenv("QTWEBENGINE_CHROMIUM_FLAGS",
            "--host-resolver-rules=\"MAP nowhere.test ~NOTFOUND,MAP *.test 127.0.0.1\"");
    return morvane::runOnPrivateDesktop<QApplication>(argc, argv);
}
