#include "AccessibleEventCount.h"
#include "MorvaneTest.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// How much assistive technology is told; a reader that is told too much drops what matters.
class EventsTest : public MorvaneTest {};

TEST_F(EventsTest, OpeningTheSettingsTellsLittle)
{
    MorvaneSession &morvane = start({});
    AccessibleEventCount events(morvane);
    events.begin();
    morvane.keyboard().press(u"Ctrl+,"_s);
    ASSERT_TRUE(morvane.program().focuses(u"Custom"_s));
    const QStringList told = events.sinceBegin();
    EXPECT_LE(told.size(), 40) << told.join(u'\n').toStdString();
    EXPECT_TRUE(told.contains(u"Activate "_s) || told.filter(u"Activate"_s).size() == 1)
        << told.join(u'\n').toStdString();
}

} // namespace
} // namespace morvane
