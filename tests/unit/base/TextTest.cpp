#include "base/Text.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

TEST(TextTest, CountsAsciiUnits)
{
    EXPECT_EQ(characterCount(u""), 0);
    EXPECT_EQ(characterCount(QString()), 0);
    EXPECT_EQ(characterCount(u"a"), 1);
    EXPECT_EQ(characterCount(QString(1000, u'x')), 1000);
}

TEST(TextTest, CountsCarriageReturnLineFeedAsOne)
{
    EXPECT_EQ(characterCount(u"\r\n"), 1);
    EXPECT_EQ(characterCount(u"a\r\nb"), 3);
    EXPECT_EQ(characterCount(u"\r\r\n\n"), 3);
    EXPECT_EQ(characterCount(u"\n\r"), 2);
    EXPECT_EQ(characterCount(u"\r\n"_s.repeated(500)), 500);
}

TEST(TextTest, CountsCarriageReturnLineFeedAsOneBeforeOtherText)
{
    EXPECT_EQ(characterCount(u"ab\r\né"), 4);
    EXPECT_EQ(characterCount(u"\r\n\u0301"), 2);
}

TEST(TextTest, CountsWhatAUserPerceivesAsOne)
{
    EXPECT_EQ(characterCount(u"e\u0301"), 1);
    EXPECT_EQ(characterCount(u"👩‍👩‍👧‍👦"), 1);
    EXPECT_EQ(characterCount(u"🇩🇪🇫🇷"), 2);
    EXPECT_EQ(characterCount(u"👍🏽"), 1);
    EXPECT_EQ(characterCount(u"각"), 1);
    EXPECT_EQ(characterCount(u"नि"), 1);
}

TEST(TextTest, AsciiCharacterJoinsTheMarkBehindIt)
{
    EXPECT_EQ(characterCount(u"abcde\u0301"), 5);
    EXPECT_EQ(characterOffset(u"abcde\u0301fg", 5), 6);
    EXPECT_EQ(characterOffset(u"abcde\u0301fg", 4), 4);
}

TEST(TextTest, CountsAsciiBehindOtherText)
{
    EXPECT_EQ(characterCount(u'ä' + QString(300, u'b')), 301);
    EXPECT_EQ(characterCount(QString(300, u'b') + u'ä'), 301);
}

TEST(TextTest, CountsSurrogatesWithoutPartner)
{
    EXPECT_EQ(characterCount(QString(QChar(0xd800)) + QChar(u'a')), 2);
    EXPECT_EQ(characterCount(QString(QChar(0xdc00))), 1);
}

TEST(TextTest, OffsetStopsAtTheEndOfTheText)
{
    EXPECT_EQ(characterOffset(u"abc", 0), 0);
    EXPECT_EQ(characterOffset(u"abc", -1), 0);
    EXPECT_EQ(characterOffset(u"abc", 2), 2);
    EXPECT_EQ(characterOffset(u"abc", 3), 3);
    EXPECT_EQ(characterOffset(u"abc", 99), 3);
    EXPECT_EQ(characterOffset(u"é👍🏽x", 2), 5);
    EXPECT_EQ(characterOffset(u"é👍🏽x", 99), 6);
}

TEST(TextTest, OffsetNeverPartsALineEnd)
{
    EXPECT_EQ(characterOffset(u"a\r\nb", 2), 3);
    EXPECT_EQ(characterOffset(u"\r\n\r\n\r\n", 2), 4);
    EXPECT_EQ(characterOffset(u"a\r\n", 1), 1);
}

TEST(TextTest, FirstCharactersKeepsAWholeTextAsItIs)
{
    const QString text = u"grüße"_s;
    EXPECT_EQ(firstCharacters(text, 5), text);
    EXPECT_EQ(firstCharacters(text, 4), u"grüß"_s);
    EXPECT_EQ(firstCharacters(text, 0), QString());
    EXPECT_EQ(firstCharacters(u"0123456789"_s, 4), u"0123"_s);
}

TEST(TextTest, TrimsUnicodeWhiteSpaceAndLineEnds)
{
    EXPECT_EQ(trimmed(u" \t\r\n\u00a0\u3000\u2028\u0085x y\u2029\u000b "), u"x y"_s);
    EXPECT_EQ(trimmed(u" \n "), QString());
}

TEST(TextTest, FlattensEveryLineEndToOneBlank)
{
    EXPECT_EQ(flattened(u"a\r\nb\nc\rd\u2028e\u2029f\u0085g", 140), u"a b c d e f g"_s);
    EXPECT_EQ(flattened(u"a\n\nb", 140), u"a  b"_s);
    EXPECT_EQ(flattened(u"\n a \r\n", 140), u"a"_s);
}

TEST(TextTest, FlattensToTheLimitAndAnEllipsis)
{
    EXPECT_EQ(flattened(QString(140, u'x'), 140), QString(140, u'x'));
    EXPECT_EQ(flattened(QString(141, u'x'), 140), QString(140, u'x') + u'…');
    EXPECT_EQ(flattened(u"👍🏽"_s.repeated(4), 3), u"👍🏽"_s.repeated(3) + u'…');
}

TEST(TextTest, FlattensLongTextsLikeShortOnes)
{
    const QString words = u"word\r\n"_s.repeated(10'000);
    EXPECT_EQ(flattened(words, 12), u"word word wo…"_s);
    const QString family = u"👩‍👩‍👧‍👦"_s.repeated(10'000);
    EXPECT_EQ(flattened(family, 50), u"👩‍👩‍👧‍👦"_s.repeated(50) + u'…');
    const QString marks = u'e' + QString(60, QChar(0x301));
    EXPECT_EQ(flattened(marks, 1), marks);
    EXPECT_EQ(flattened(marks + u'x', 1), marks + u'…');
    EXPECT_EQ(flattened(marks.repeated(1000), 900), marks.repeated(900) + u'…');
    EXPECT_EQ(flattened(u'x' + QString(10'000, u'\n'), 5), u"x"_s);
    EXPECT_EQ(flattened(u"abc", 0), u"…"_s);
}

TEST(TextTest, OffsetInALongTextIsThatOfItsBeginning)
{
    const QString ascii = u"ab\r\n"_s.repeated(10'000);
    EXPECT_EQ(characterOffset(ascii, 100), 133);
    const QString mixed = u"a"_s.repeated(202) + u"\u0301"_s.repeated(5) + ascii;
    EXPECT_EQ(characterOffset(mixed, 100), 100);
    EXPECT_EQ(characterOffset(mixed, 201), 201);
    EXPECT_EQ(characterOffset(mixed, 202), 207);
}

TEST(TextTest, AClusterTooLongToBeWrittenIsSeveralCharacters)
{
    const QString marks = u'e' + QString(3'000'000, QChar(0x301));
    EXPECT_EQ(characterCount(marks), 46'876); // 3,000,001 units, 64 each
    EXPECT_EQ(characterOffset(marks, 600), 600 * longestCharacterUnits);
    EXPECT_EQ(firstCharacters(marks, 40).size(), 40 * longestCharacterUnits);
    EXPECT_EQ(flattened(marks, 140), marks.first(140 * longestCharacterUnits) + u'…');
    EXPECT_EQ(characterOffset(u"ab"_s + marks + u"c"_s, 2), 2);
}

TEST(TextTest, AClusterTooLongIsNeverCutWithinASurrogatePair)
{
    const QString tags = u'x' + QString::fromUcs4(U"\U000E0061").repeated(200);
    for (const qsizetype count : {1, 2, 3, 4}) {
        const QString beginning = firstCharacters(tags, count);
        EXPECT_FALSE(beginning.back().isHighSurrogate());
        EXPECT_EQ(beginning.size(), count * longestCharacterUnits - 1);
    }
}

TEST(TextTest, WhatPeopleWriteStaysOneCharacter)
{
    const QString family = u"👩🏽‍❤️‍💋‍👨🏿"_s;
    EXPECT_EQ(characterCount(family), 1);
    EXPECT_EQ(characterCount(family.repeated(1000)), 1000);
    EXPECT_EQ(characterOffset(family.repeated(1000), 999), 999 * family.size());
    EXPECT_EQ(characterCount(u"🏴󠁧󠁢󠁥󠁮󠁧󠁿"), 1);
}

} // namespace
} // namespace morvane
