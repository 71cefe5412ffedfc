#include "base/VisibleText.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

QString shown(const QString &text)
{
    return visibleText(text).text;
}

TEST(VisibleTextTest, OrdinaryTextStaysAsItIs)
{
    const QString text = u"rm -rf \"/tmp/älter\" && echo '漢字 😀 ∂ שלום' | sort"_s;
    const VisibleText visible = visibleText(text);
    EXPECT_EQ(visible.text, text);
    EXPECT_TRUE(visible.escapes.isEmpty());
}

TEST(VisibleTextTest, BlanksAndLineFeedsStay)
{
    EXPECT_EQ(shown(u"a  b\n\nc\n"_s), u"a  b\n\nc\n"_s);
}

TEST(VisibleTextTest, ARunOfBlanksTooLongToBeSeenIsCounted)
{
    const VisibleText visible = visibleText(u"ls"_s + QString(200, u' ') + u"; rm -rf ~  x"_s);
    EXPECT_EQ(visible.text, u"ls[200 blanks]; rm -rf ~  x"_s);
    EXPECT_EQ(visible.escapes, (QList<VisibleText::Range>{{2, 12}}));
    EXPECT_EQ(shown(QString(32, u' ')), QString(32, u' '));
    EXPECT_EQ(shown(QString(33, u' ')), u"[33 blanks]"_s);
}

TEST(VisibleTextTest, ControlCharactersAreEscaped)
{
    EXPECT_EQ(shown(u"a\tb"_s), u"a\\tb"_s);
    EXPECT_EQ(shown(u"a\rb\r\n"_s), u"a\\rb\\r\n"_s);
    EXPECT_EQ(shown(u"\u0008\u001B[2K\u007F\u0085"_s), u"\\u0008\\u001B[2K\\u007F\\u0085"_s);
    EXPECT_EQ(shown(QString(QChar(u'\0'))), u"\\u0000"_s);
}

TEST(VisibleTextTest, DirectionMarksAndOverridesAreEscaped)
{
    for (const char32_t mark :
         {0x202A, 0x202B, 0x202C, 0x202D, 0x202E, 0x2066, 0x2067, 0x2068, 0x2069, 0x200E, 0x200F, 0x061C}) {
        const QString expected =
            u"\\u"_s + QString::number(static_cast<uint>(mark), 16).toUpper().rightJustified(4, u'0');
        EXPECT_EQ(shown(QString::fromUcs4(&mark, 1)), expected);
    }
}

TEST(VisibleTextTest, ZeroWidthAndOtherInvisibleCharactersAreEscaped)
{
    // Not from UCS-4, which takes U+FEFF for a byte order mark and drops it.
    for (const char16_t invisible : {0x200B, 0x200C, 0x200D, 0x2060, 0x2063, 0xFEFF, 0x00AD, 0x034F, 0x115F,
                                     0x1160, 0x3164, 0xFFA0, 0x17B4, 0x180E, 0xFE0F, 0x2800, 0xFFF9}) {
        EXPECT_EQ(visibleText(QString(QChar(invisible))).escapes.size(), 1)
            << std::hex << static_cast<uint>(invisible);
    }
}

TEST(VisibleTextTest, LookAlikesOfBlanksAndLineEndsAreEscaped)
{
    EXPECT_EQ(shown(u"a\u2028b\u2029c"_s), u"a\\u2028b\\u2029c"_s);
    EXPECT_EQ(shown(u"\u00A0\u2003\u202F\u3000\u000B\u000C"_s),
              u"\\u00A0\\u2003\\u202F\\u3000\\u000B\\u000C"_s);
}

TEST(VisibleTextTest, CharactersBeyondTheFirstPlaneHaveEightDigits)
{
    const char32_t tag = 0xE0041;
    EXPECT_EQ(shown(QString::fromUcs4(&tag, 1)), u"\\U000E0041"_s);
}

TEST(VisibleTextTest, HalvesOfSurrogatePairsAreEscaped)
{
    EXPECT_EQ(shown(u"a"_s + QChar(0xD83D) + u"b"_s + QChar(0xDE00)), u"a\\uD83Db\\uDE00"_s);
    EXPECT_EQ(shown(QString(QChar(0xD83D))), u"\\uD83D"_s);
}

TEST(VisibleTextTest, TellsWhereItEscaped)
{
    const VisibleText visible = visibleText(u"a\u202Eb\t"_s);
    EXPECT_EQ(visible.text, u"a\\u202Eb\\t"_s);
    const QList<VisibleText::Range> expected{{1, 6}, {8, 2}};
    EXPECT_EQ(visible.escapes, expected);
}

TEST(VisibleTextTest, CommandsThatHideAPartAreShownWhole)
{
    EXPECT_EQ(shown(u"rm -rf ~\rls     "_s), u"rm -rf ~\\rls     "_s);
    EXPECT_EQ(shown(u"rm -rf ~ #\b\b\b\b"_s), u"rm -rf ~ #\\u0008\\u0008\\u0008\\u0008"_s);
    EXPECT_EQ(shown(u"rm -rf ~\u001B[8D\u001B[Kls"_s), u"rm -rf ~\\u001B[8D\\u001B[Kls"_s);
    EXPECT_EQ(shown(u"cat \u202Etxt.hsab\u202C"_s), u"cat \\u202Etxt.hsab\\u202C"_s);
    EXPECT_EQ(shown(u"su\u200Bdo ls"_s), u"su\\u200Bdo ls"_s);
    EXPECT_EQ(shown(u"ls\u2028rm -rf ~"_s), u"ls\\u2028rm -rf ~"_s);
    EXPECT_EQ(shown(u"rm\u00A0-rf ~"_s), u"rm\\u00A0-rf ~"_s);
    EXPECT_EQ(shown(u"ls"_s + QChar(0) + u"; rm"_s), u"ls\\u0000; rm"_s);
}

TEST(VisibleTextTest, LookAlikeLettersStayAsTheyAre)
{
    // Every script has letters that look like another's; nothing tells an honest one.
    const QString text = u"\u0455udo \uFF53\uFF55 \u017F r\u043C"_s;
    EXPECT_EQ(shown(text), text);
}

TEST(VisibleTextTest, AMegabyteOfHiddenCharactersIsShown)
{
    constexpr qsizetype size = 1'000'000;
    const VisibleText visible = visibleText(QString(size, QChar(0x202E)));
    EXPECT_EQ(visible.text, u"\\u202E"_s.repeated(size));
    EXPECT_EQ(visible.escapes.size(), size);
}

TEST(VisibleTextTest, EmptyTextStaysEmpty)
{
    EXPECT_EQ(shown(QString()), QString());
}

} // namespace
} // namespace morvane
