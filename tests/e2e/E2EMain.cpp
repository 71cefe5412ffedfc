#include "MorvaneTest.h"

#include <QGuiApplication>
#include <array>
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
    // Fonts for the files that tests draw; by arguments, since the program under test inherits the
    // environment.
    std::array arguments{argv[0], const_cast<char *>("-platform"), const_cast<char *>("offscreen")};
    int count = static_cast<int>(arguments.size());
    QGuiApplication application(count, arguments.data());
    testing::InitGoogleMock(&argc, argv);
    testing::AddGlobalTestEnvironment(new DesktopEnvironment);
    return RUN_ALL_TESTS();
}
