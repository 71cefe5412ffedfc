#include "browser/pages/PageScripts.h"

#include <QFile>
#include <gtest/gtest.h>

namespace morvane {
namespace {

/// The scripts as they are to be, from a file: for reading, a click on "@e1", and typing there without and
/// with a form that is sent.
class PageScriptsTest : public testing::Test {
protected:
    PageScriptsTest()
    {
        QFile file(QStringLiteral(MORVANE_SOURCE_DIR "/tests/unit/browser/PageScripts.txt"));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        QString text = QString::fromUtf8(file.readAll());
        text.chop(1);
        expected = text.split("\n=====\n");
    }

    QStringList expected;
};

TEST_F(PageScriptsTest, EachIsWordForWord)
{
    ASSERT_EQ(expected.size(), 4);
    EXPECT_EQ(elementScript(), expected[0]);
    EXPECT_EQ(clickScript("@e1"), expected[1]);
    EXPECT_EQ(typeScript("@e1", "a\\b\"c\nd'e", false), expected[2]);
    EXPECT_EQ(typeScript("@e1", "x", true), expected[3]);
}

TEST_F(PageScriptsTest, AMarkCannotLeaveItsQuotes)
{
    EXPECT_EQ(clickScript("\"@\"e1\""), expected[1]);
    EXPECT_EQ(typeScript("@e1\"\"", "x", true), expected[3]);
}

TEST_F(PageScriptsTest, AUnitOfScrollingIsSixHundredPixels)
{
    EXPECT_EQ(scrollScript(1), "window.scrollBy(0, -600); 'scrolled'");
    EXPECT_EQ(scrollScript(-2), "window.scrollBy(0, 1200); 'scrolled'");
}

} // namespace
} // namespace morvane
