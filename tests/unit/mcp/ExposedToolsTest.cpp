#include "mcp/ExposedTools.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

TEST(ExposedToolsTest, LettersAndNumbersOfAnyScriptStay)
{
    EXPECT_EQ(sanitize(u"Büro 2"_s), u"büro_2");
    EXPECT_EQ(exposedName(u"日本語"_s, u"read"_s), u"mcp_日本語_read");
    EXPECT_EQ(sanitize(u"٣ ½ Ⅷ"_s), u"٣_½_ⅷ");
}

TEST(ExposedToolsTest, EveryOtherCharacterBecomesOneUnderscore)
{
    EXPECT_EQ(sanitize(u"a--b..c"_s), u"a__b__c");
    EXPECT_EQ(sanitize(u" x "_s), u"_x_");
    EXPECT_EQ(sanitize(u"a\r\nb\rc\nd"_s), u"a_b_c_d") << "the two ends together are one character";
    EXPECT_EQ(sanitize(u"👩‍👩‍👧!"_s), u"__");
    EXPECT_EQ(sanitize({}), u"");
}

TEST(ExposedToolsTest, ALetterKeepsTheMarksOnIt)
{
    EXPECT_EQ(sanitize(u"Cafe\u0301-x"_s), u"cafe\u0301_x");
}

TEST(ExposedToolsTest, ANameOfAnyLengthIsReadInProportion)
{
    EXPECT_EQ(sanitize(QString(200'000, u'ü')).size(), 200'000);
    EXPECT_EQ(sanitize(QString(200'000, u'-')), QString(200'000, u'_'));
}

TEST(ExposedToolsTest, ToolsKeepTheirOrderAndTheirOwnNames)
{
    const QList<ExposedTool> exposed =
        exposedTools(u"S 1"_s, {{u"read.file"_s, u"Reads."_s, {}}, {u"b"_s, {}, {}}});
    ASSERT_EQ(exposed.size(), 2);
    EXPECT_EQ(exposed[0].name, u"read.file");
    EXPECT_EQ(exposed[0].declared.name, u"mcp_s_1_read_file");
    EXPECT_EQ(exposed[0].declared.description, u"[S 1] Reads.");
    EXPECT_EQ(exposed[1].declared.description, u"[S 1] b");
}

} // namespace
} // namespace morvane
