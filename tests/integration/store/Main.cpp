#include "CrashingWriter.h"
#include "support/LogListener.h"

#include <QCoreApplication>
#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    if (arguments.size() == 4 && arguments.at(1) == u"--writer"_s)
        return morvane::runCrashingWriter(arguments.at(2), arguments.at(3));
    testing::InitGoogleMock(&argc, argv);
    morvane::watchTheLog();
    return RUN_ALL_TESTS();
}
