#include "support/RunOnPrivateDesktop.h"

#include <QApplication>

/// The real engine, on a desktop of the tests' own. As root it runs without its sandbox.
int main(int argc, char **argv)
{
    qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
    return morvane::runOnPrivateDesktop<QApplication>(argc, argv);
}
