#include "ui/sheets/VisibleText.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

QString shown(const QString &text)
{
    return visibleText(text).text;
}

TEST(VisibleTextTest, OrdinaryTextStaysAsItIs)
{
    const QString text = QStringLiteral("rm -rf \"/tmp/älter\" && echo '漢字 😀 ∂ שלום' | sort");
    const VisibleText visible = visibleText(text);
    EXPECT_EQ(visible.text, text);
    EXPECT_TRUE(visible.escapes.isEmpty());
}

TEST(VisibleTextTest, BlanksAndLineFeedsStay)
{
    EXPECT_EQ(shown(QStringLiteral("a  b\n\nc\n")), QStringLiteral("a  b\n\nc\n"));
}

TEST(VisibleTextTest, ControlCharactersAreEscaped)
{
    EXPECT_EQ(shown(QStringLiteral("a\tb")), QStringLiteral("a\\tb"));
    EXPECT_EQ(shown(QStringLiteral("a\rb\r\n")), QStringLiteral("a\\rb\\r\n"));
    EXPECT_EQ(shown(QStringLiteral("\u0008\u001B[2K\u007F\u0085")),
              QStringLiteral("\\u0008\\u001B[2K\\u007F\\u0085"));
    EXPECT_EQ(shown(QString(QChar(u'\0'))), QStringLiteral("\\u0000"));
}

TEST(VisibleTextTest, DirectionMarksAndOverridesAreEscaped)
{
    for (const char32_t mark :
         {0x202A, 0x202B, 0x202C, 0x202D, 0x202E, 0x2066, 0x2067, 0x2068, 0x2069, 0x200E, 0x200F, 0x061C}) {
        const QString expected =
            QStringLiteral("\\u") +
            QString::number(static_cast<uint>(mark), 16).toUpper().rightJustified(4, QLatin1Char('0'));
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
    EXPECT_EQ(shown(QStringLiteral("a\u2028b\u2029c")), QStringLiteral("a\\u2028b\\u2029c"));
    EXPECT_EQ(shown(QStringLiteral("\u00A0\u2003\u202F\u3000\u000B\u000C")),
              QStringLiteral("\\u00A0\\u2003\\u202F\\u3000\\u000B\\u000C"));
}

TEST(VisibleTextTest, CharactersBeyondTheFirstPlaneHaveEightDigits)
{
    const char32_t tag = 0xE0041;
    EXPECT_EQ(shown(QString::fromUcs4(&tag, 1)), QStringLiteral("\\U000E0041"));
}

TEST(VisibleTextTest, HalvesOfSurrogatePairsAreEscaped)
{
    EXPECT_EQ(shown(QStringLiteral("a") + QChar(0xD83D) + QStringLiteral("b") + QChar(0xDE00)),
              QStringLiteral("a\\uD83Db\\uDE00"));
    EXPECT_EQ(shown(QString(QChar(0xD83D))), QStringLiteral("\\uD83D"));
}

TEST(VisibleTextTest, TellsWhereItEscaped)
{
    const VisibleText visible = visibleText(QStringLiteral("a\u202Eb\t"));
    EXPECT_EQ(visible.text, QStringLiteral("a\\u202Eb\\t"));
    const QList<VisibleText::Range> expected{{1, 6}, {8, 2}};
    EXPECT_EQ(visible.escapes, expected);
}

TEST(VisibleTextTest, CommandsThatHideAPartAreShownWhole)
{
    EXPECT_EQ(shown(QStringLiteral("rm -rf ~\rls     ")), QStringLiteral("rm -rf ~\\rls     "));
    EXPECT_EQ(shown(QStringLiteral("rm -rf ~ #\b\b\b\b")),
              QStringLiteral("rm -rf ~ #\\u0008\\u0008\\u0008\\u0008"));
    EXPECT_EQ(shown(QStringLiteral("rm -rf ~\u001B[8D\u001B[Kls")),
              QStringLiteral("rm -rf ~\\u001B[8D\\u001B[Kls"));
    EXPECT_EQ(shown(QStringLiteral("cat \u202Etxt.hsab\u202C")),
              QStringLiteral("cat \\u202Etxt.hsab\\u202C"));
    EXPECT_EQ(shown(QStringLiteral("su\u200Bdo ls")), QStringLiteral("su\\u200Bdo ls"));
    EXPECT_EQ(shown(QStringLiteral("ls\u2028rm -rf ~")), QStringLiteral("ls\\u2028rm -rf ~"));
    EXPECT_EQ(shown(QStringLiteral("rm\u00A0-rf ~")), QStringLiteral("rm\\u00A0-rf ~"));
    EXPECT_EQ(shown(QStringLiteral("ls") + QChar(0) + QStringLiteral("; rm")),
              QStringLiteral("ls\\u0000; rm"));
}

TEST(VisibleTextTest, LookAlikeLettersStayAsTheyAre)
{
    // Every script has letters that look like another's; nothing tells an honest one.
    const QString text = QStringLiteral("\u0455udo \uFF53\uFF55 \u017F r\u043C");
    EXPECT_EQ(shown(text), text);
}

TEST(VisibleTextTest, AMegabyteOfHiddenCharactersIsShown)
{
    constexpr qsizetype size = 1'000'000;
    const VisibleText visible = visibleText(QString(size, QChar(0x202E)));
    EXPECT_EQ(visible.text, QStringLiteral("\\u202E").repeated(size));
    EXPECT_EQ(visible.escapes.size(), size);
}

TEST(VisibleTextTest, EmptyTextStaysEmpty)
{
    EXPECT_EQ(shown(QString()), QString());
}

} // namespace
} // namespace morvane
