#include "support/RunOnPrivateDesktop.h"

#include <QGuiApplication>

/// The tools act on a desktop of the tests' own, with programs that others wrote.
int main(int argc, char **argv)
{
    return morvane::runOnPrivateDesktop<QGuiApplication>(argc, argv);
}
