#include "ui/markdown/PlainTextSegmenter.h"

#include "base/Text.h"
#include "ui/markdown/LayoutCost.h"

#include <QString>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

QList<TextSegment> cut(const QString &text)
{
    QList<TextSegment> segments;
    extendPlainSegments(segments, text);
    return segments;
}

/// Fails unless the segments cover the text without gaps and none is too long.
void expectCovers(const QList<TextSegment> &segments, const QString &text)
{
    qsizetype at = 0;
    for (const TextSegment &segment : segments) {
        EXPECT_EQ(segment.from, at);
        EXPECT_LE(segment.length, segmentLimit);
        EXPECT_LE(text.sliced(segment.from, segment.length).count(u'\n'), segmentLineLimit);
        at = segment.end();
    }
    EXPECT_EQ(at, text.size());
}

TEST(PlainTextSegmenterTest, AShortTextIsOneSegment)
{
    EXPECT_EQ(cut(u"Hello\nyou"_s), (QList<TextSegment>{{.from = 0, .length = 9}}));
}

TEST(PlainTextSegmenterTest, AnEmptyTextIsOneEmptySegment)
{
    EXPECT_EQ(cut({}), (QList<TextSegment>{{.from = 0, .length = 0}}));
}

TEST(PlainTextSegmenterTest, LongTextsAreCutAtLineEnds)
{
    QString text;
    for (int i = 0; i < 400; ++i)
        text += QString(60, u'x') + u'\n';
    const auto segments = cut(text);
    expectCovers(segments, text);
    for (const TextSegment &segment : segments)
        EXPECT_EQ(text.at(segment.end() - 1), u'\n');
}

TEST(PlainTextSegmenterTest, ManyShortLinesDoNotMakeOneHugeSegment)
{
    const QString text(100'000, u'\n');
    const auto segments = cut(text);
    expectCovers(segments, text);
    EXPECT_EQ(segments.size(), (100'000 + segmentLineLimit - 1) / segmentLineLimit);
}

TEST(PlainTextSegmenterTest, AParagraphWithoutLineEndsIsCutBetweenWords)
{
    const QString text = u"token "_s.repeated(100'000);
    const auto segments = cut(text);
    expectCovers(segments, text);
    for (const TextSegment &segment : segments)
        EXPECT_EQ(text.at(segment.from), u't');
}

TEST(PlainTextSegmenterTest, AWordWithoutEndIsCutWhereItMust)
{
    const QString text(10'000, u'a');
    const auto segments = cut(text);
    expectCovers(segments, text);
    EXPECT_EQ(segments.size(), 10'000 / segmentLimit);
}

TEST(PlainTextSegmenterTest, WhatCostsMoreToLayOutIsCutShorter)
{
    for (const QString &text : {u'e' + QString(10'000, QChar(0x301)), u"👩"_s.repeated(5'000)}) {
        const auto segments = cut(text);
        expectCovers(segments, text);
        for (const TextSegment &segment : segments)
            EXPECT_LE(layoutCost(text.sliced(segment.from, segment.length)), segmentLimit);
    }
}

TEST(PlainTextSegmenterTest, ASegmentHoldsNoMoreEmojiThanCanBeDrawnInAFrame)
{
    constexpr qsizetype most = 25;
    for (const QString &emoji : {u"👩"_s, u"✅"_s, u"🇩"_s}) {
        const QString text = emoji.repeated(1'000);
        const auto segments = cut(text);
        expectCovers(segments, text);
        for (const TextSegment &segment : segments)
            EXPECT_LE(segment.length, most * emoji.size()) << emoji.toStdString();
    }
}

TEST(PlainTextSegmenterTest, OnlyTheFirstSegmentStartsTheText)
{
    const auto segments = cut(QString(10'000, u'a'));
    EXPECT_TRUE(segments.first().startsBlock);
    for (const TextSegment &segment : segments.sliced(1))
        EXPECT_FALSE(segment.startsBlock);
}

TEST(PlainTextSegmenterTest, ACutNeverSplitsASurrogatePair)
{
    const QString text = u"a"_s + u"😀"_s.repeated(4000);
    const auto segments = cut(text);
    expectCovers(segments, text);
    for (const TextSegment &segment : segments)
        EXPECT_FALSE(text.at(segment.from).isLowSurrogate());
}

TEST(PlainTextSegmenterTest, ACutPartsNoCharacterOfSeveralLetters)
{
    const QString text = u"a"_s + u"e\u0301\u0323"_s.repeated(4000);
    const auto segments = cut(text);
    expectCovers(segments, text);
    ASSERT_GT(segments.size(), 3);
    for (const TextSegment &segment : segments.sliced(1))
        EXPECT_EQ(text.at(segment.from), u'e');
}

TEST(PlainTextSegmenterTest, ACutOfAnyScriptIsBetweenTwoCharacters)
{
    const QStringList characters{u"\U0001F468\u200D\U0001F469\u200D\U0001F467"_s, // a family
                                 u"\U0001F44D\U0001F3FD"_s,                       // a thumb with its colour
                                 u"\U0001F1E9\U0001F1EA"_s,                       // a flag
                                 u"\u2764\uFE0F"_s,                               // a heart in colour
                                 u"1\uFE0F\u20E3"_s,                              // a key
                                 u"\u1112\u1161\u11AB"_s,                         // a Korean syllable of jamo
                                 u"\u0E01\u0E33"_s,  // Thai, a vowel behind its letter
                                 u"\u0600\u0661"_s,  // Arabic, a number sign before its digit
                                 u"\uFF76\uFF9E"_s,  // Japanese, a voiced half-width letter
                                 u"\u0939\u093F"_s}; // Hindi, a vowel sign
    for (const QString &character : characters)
        for (const QString &beginning :
             {u""_s, u"a"_s, u"ab"_s, u"abc"_s, u"abcd"_s, u"abcde"_s, u"abcdef"_s}) {
            ASSERT_EQ(characterCount(character), 1);
            const QString text = beginning + character.repeated(3000);
            const auto segments = cut(text);
            ASSERT_GT(segments.size(), 1);
            for (const TextSegment &segment : segments.sliced(1))
                ASSERT_TRUE(segment.from < beginning.size() ||
                            (segment.from - beginning.size()) % character.size() == 0)
                    << character.toStdString();
        }
}

TEST(PlainTextSegmenterTest, ACutPartsNoLineEnd)
{
    const QString line(segmentLimit - 1, u'x');
    const auto segments = cut(line + u"\r\n"_s + line);
    EXPECT_EQ(segments.value(1).from, segmentLimit - 1);
}

TEST(PlainTextSegmenterTest, AGrowingTextEndsUpCutLikeTheWholeOne)
{
    QString text;
    QList<TextSegment> segments;
    for (int i = 0; i < 3000; ++i) {
        text += i % 40 == 0 ? u"word\n"_s : u"word "_s;
        const qsizetype countBefore = segments.size();
        const qsizetype first = extendPlainSegments(segments, text);
        EXPECT_GE(first, countBefore - 1);
    }
    expectCovers(segments, text);
    EXPECT_EQ(segments, cut(text));
}

} // namespace
} // namespace morvane
