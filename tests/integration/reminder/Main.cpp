#include "support/RunOnPrivateDesktop.h"

#include <QCoreApplication>

/// The delivering program needs a session bus, and its banners a desktop.
int main(int argc, char **argv)
{
    return morvane::runOnPrivateDesktop<QCoreApplication>(argc, argv);
}
