#include "MorvaneTest.h"

#include <QCoreApplication>
#include <gmock/gmock.h>

namespace {

/// The desktop of all tests of the program; a listing of the tests needs none.
class DesktopEnvironment : public testing::Environment {
public:
    void SetUp() override { morvane::MorvaneTest::startDesktop(); }
    void TearDown() override { morvane::MorvaneTest::endDesktop(); }
};

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    testing::InitGoogleMock(&argc, argv);
    testing::AddGlobalTestEnvironment(new DesktopEnvironment);
    return RUN_ALL_TESTS();
}
