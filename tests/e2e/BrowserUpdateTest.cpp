#include "UpdateTest.h"

#include <gmock/gmock.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using BrowserUpdateTest = UpdateTest;

TEST_F(BrowserUpdateTest, AnOpenPageDoesNotHoldTheUpdate)
{
    world.offer();
    MorvaneSession &morvane = prepareBundle();
    if (::geteuid() == 0) // whom the engine does not protect
        morvane.setVariable(u"QTWEBENGINE_DISABLE_SANDBOX"_s, u"1"_s);
    morvane.start();
    morvane.program().find(u"Morvane Browser"_s, AccessibleRole::pushButton).press();
    ASSERT_TRUE(morvane.program().shows(u"Browser content: Start Page"_s));
    morvane.program().find(u"Update Now"_s, AccessibleRole::pushButton).press();
    EXPECT_EQ(morvane.program().process().waitForExit(), 0);
    withRelaunched(morvane, [&](const AccessibleProgram &relaunched) {
        EXPECT_TRUE(relaunched.shows(u"Message Morvane"_s));
        relaunched.find(u"Morvane Browser"_s, AccessibleRole::pushButton).press();
        EXPECT_TRUE(relaunched.shows(u"Browser content: Start Page"_s));
    });
}

} // namespace
} // namespace morvane
