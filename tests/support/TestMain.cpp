#include "support/LogListener.h"

#include <QCoreApplication>
#include <gmock/gmock.h>

/// The main function of every test program that brings none of its own.
int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    testing::InitGoogleMock(&argc, argv);
    morvane::watchTheLog();
    return RUN_ALL_TESTS();
}
