#include "support/RunOnPrivateDesktop.h"

#include <QApplication>

int main(int argc, char **argv)
{
    QApplication::setQuitOnLastWindowClosed(false);
    return morvane::runOnPrivateDesktop<QApplication>(argc, argv);
}
