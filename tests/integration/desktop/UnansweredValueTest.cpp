#include "DesktopFixture.h"

#include "ScriptedCarrier.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// What carries values to elements ends before it is known whether they were taken.
class UnansweredValueTest : public DesktopFixture {
protected:
    /// What comes of typing `text` into the first element that has `summary`.
    QString typeInto(const QString &summary, const QString &text, const QString &carrier)
    {
        Desktop own = desktop();
        own.elements = std::make_shared<LinuxAccessibilityTree>(
            scriptedCarrier(m_folder.filePath(u"carrier"_s), carrier));
        ScreenTools tools(own);
        captureWith(summary);
        return run(tools.axType(numberOf(run(tools.captureScreen()), summary), text));
    }
};

TEST_F(UnansweredValueTest, ATextIsNotTypedAsWell)
{
    startWindow(u"widget = Gtk.Entry()"_s);
    for (const QString &end : {u"kill -KILL $$\n"_s, u"tell 4 1\n"_s}) {
        EXPECT_EQ(typeInto(u"text field"_s, u"amber"_s, u"take\ntell 0 1\n"_s + end),
                  u"Set the contents of text field to \"amber\"."_s);
        EXPECT_FALSE(capture().contains(u"amber"_s));
    }
}

TEST_F(UnansweredValueTest, NorIsANumber)
{
    startWindow(u"widget = Gtk.Scale.new_with_range(Gtk.Orientation.HORIZONTAL, 0, 100, 1)"_s);
    for (const QString &end : {u"kill -KILL $$\n"_s, u"tell 4 2\n"_s})
        EXPECT_TRUE(typeInto(u"slider"_s, u"42"_s, u"take\ntell 0 1\ntell 3 1\ntake\ntell 0 2\n"_s + end)
                        .startsWith(u"Set the contents of slider"_s));
}

} // namespace
} // namespace morvane
