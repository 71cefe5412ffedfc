#include "localmodel/TerminalText.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

QString plain(const QByteArray &bytes)
{
    return TerminalText().append(bytes);
}

TEST(TerminalTextTest, TextStaysAsItIs)
{
    EXPECT_EQ(plain("grün\tund\n▕██ ▏ 🦙\r"), u"grün\tund\n▕██ ▏ 🦙\r"_s);
}

TEST(TerminalTextTest, ControlSequencesAreLeftOut)
{
    EXPECT_EQ(plain("\x1b[31mred\x1b[0m"), u"red"_s);
    EXPECT_EQ(plain("\x1b[?25l\x1b[?25hx"), u"x"_s);
    EXPECT_EQ(plain("\x1b]0;title\x07x"), u"x"_s);
    EXPECT_EQ(plain("\x1b]8;;http://x\x1b\\link\x1b]8;;\x1b\\"), u"link"_s);
    EXPECT_EQ(plain("\x1bP1$r\x1b\\x\x1b^y\x1b\\z\x1b_w\x1b\\"), u"xz"_s);
    EXPECT_EQ(plain("\x1b(B\x1b=\x1b"
                    "7x"),
              u"x"_s);
    EXPECT_EQ(plain("\xc2\x9b"
                    "31mred\xc2\x9d"
                    "0;t\xc2\x9cx"),
              u"redx"_s);
    EXPECT_EQ(plain(QByteArray("a\0b\x08\x7f\x1f"
                               "c",
                               7)),
              u"abc"_s);
}

TEST(TerminalTextTest, WhatMovesTheCursorEndsTheLine)
{
    EXPECT_EQ(plain("one\x1b[Ktwo\x1b[1Gthree\x1b[A\x1b[2Jfour"), u"one\rtwo\rthree\r\rfour"_s);
}

TEST(TerminalTextTest, WhatIsNoTextIsLeftOut)
{
    EXPECT_EQ(plain("a\xff\xfe"
                    "b\xc3(c"),
              u"ab(c"_s);
}

TEST(TerminalTextTest, SequencesThatBreakOffSwallowNothing)
{
    EXPECT_EQ(plain("\x1b[12\nnext"), u"\nnext"_s);
    EXPECT_EQ(plain("\x1b]never ended\nnext"), u"\nnext"_s);
    EXPECT_EQ(plain("\x1b\x1b[31mx"), u"x"_s);
    EXPECT_EQ(plain("\x1b[31\x1b[32mx"), u"x"_s);
    EXPECT_EQ(plain("\x1b\nx"), u"\nx"_s);
}

TEST(TerminalTextTest, BytesMayBeCutAnywhere)
{
    const QByteArray bytes = "grün ▕█ 🦙\x1b[31;1mred\x1b[0m\x1b]0;t\x1b\\x\x1b[Ky\xc2\x9b"
                             "1mz\n";
    const QString whole = plain(bytes);
    for (qsizetype cut = 0; cut <= bytes.size(); ++cut) {
        TerminalText text;
        EXPECT_EQ(text.append(bytes.first(cut)) + text.append(bytes.sliced(cut)), whole) << cut;
    }
    const QByteArray noText = "a\xdb\xdb\xdb\xdb"
                              "b\xf0\x9f"
                              "c\xe2\x80"
                              "d\xc3";
    TerminalText bytewise;
    QString letters;
    for (const char byte : noText)
        letters += bytewise.append(QByteArrayView(&byte, 1));
    EXPECT_EQ(letters, u"abcd"_s);
}

TEST(TerminalTextTest, FramesAreTold)
{
    TerminalText text;
    text.append("\x1b[?2026h");
    EXPECT_TRUE(text.isInFrame());
    text.append("x\x1b[?25h\x1b[?202");
    EXPECT_TRUE(text.isInFrame());
    text.append("6l");
    EXPECT_FALSE(text.isInFrame());
}

} // namespace
} // namespace morvane
