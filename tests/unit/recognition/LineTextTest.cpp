#include "recognition/LineText.h"

#include <gmock/gmock.h>

namespace morvane {
namespace {

using Slot = LinePicture::Slot;

ReadWord read(int left, int right, const std::string &text, float confidence = 90)
{
    return {left, right, {text, confidence, false}};
}

WordText word(const std::string &text, bool isRightToLeft = false, float confidence = 90)
{
    return {text, confidence, isRightToLeft};
}

TEST(TextsOfTest, EachWordGoesToTheSlotThatItIsIn)
{
    const auto texts = textsOf({{5, 50}, {60, 100}}, {read(7, 48, "one"), read(58, 97, "two")});
    ASSERT_TRUE(texts[0] && texts[1]);
    EXPECT_EQ(texts[0]->text, "one");
    EXPECT_EQ(texts[1]->text, "two");
}

TEST(TextsOfTest, SeveralWordsInOneSlotAreJoined)
{
    const auto texts = textsOf({{5, 100}}, {read(5, 40, "one", 80), read(60, 100, "two", 60)});
    ASSERT_TRUE(texts[0]);
    EXPECT_EQ(texts[0]->text, "one two");
    EXPECT_FLOAT_EQ(texts[0]->confidence, 70);
}

TEST(TextsOfTest, AWordOverTwoSlotsIsUnclearAndSoIsAnEmptySlot)
{
    const auto texts = textsOf({{5, 50}, {60, 100}, {110, 150}, {160, 200}},
                               {read(7, 98, "onetwo"), read(110, 150, "three")});
    EXPECT_FALSE(texts[0]);
    EXPECT_FALSE(texts[1]);
    ASSERT_TRUE(texts[2]);
    EXPECT_EQ(texts[2]->text, "three");
    EXPECT_FALSE(texts[3]);
}

TEST(TextsOfTest, WithoutSlotsOrWordsThereIsNothing)
{
    EXPECT_TRUE(textsOf({}, {read(1, 2, "x")}).empty());
    EXPECT_FALSE(textsOf({{1, 9}}, {})[0]);
    EXPECT_EQ(surestWord({{}}).text, "");
}

TEST(LineTextTest, WordsAreSetApartAndThoseWithoutLettersLeftOut)
{
    EXPECT_EQ(lineText({word("Save"), word(""), word("as")}), "Save as");
    EXPECT_EQ(lineText({}), "");
    EXPECT_EQ(lineText({word(""), word("")}), "");
}

TEST(LineTextTest, WhatIsHardlyBetterThanGuessedIsNoText)
{
    EXPECT_EQ(lineText({word("lI|", false, 20), word("~", false, 35)}), "");
    EXPECT_EQ(lineText({word("icon", false, 20), word("Save", false, 45)}), "icon Save");
}

TEST(LineTextTest, ALineFromRightToLeftKeepsItsNumbersInOrder)
{
    EXPECT_EQ(lineText({word("5"), word("kg"), word("beta", true), word("alpha", true), word("gamma", true)}),
              "gamma alpha beta 5 kg");
    EXPECT_EQ(lineText({word("b", true), word("Open"), word("file"), word("a", true), word("c", true)}),
              "c a Open file b");
    EXPECT_EQ(lineText({word("one"), word("two"), word("alpha", true)}), "one two alpha");
}

TEST(LineTextTest, OfSeveralReadingsTheSurestCountsForEachWord)
{
    const std::vector<ReadWord> one{read(5, 40, "für", 90), read(60, 90, "Ihe", 40)};
    const std::vector<ReadWord> other{read(5, 40, "fur", 70), read(60, 90, "the", 95)};
    const auto texts = surestTexts({{5, 40}, {60, 90}, {110, 150}}, {one, other});
    ASSERT_TRUE(texts[0] && texts[1]);
    EXPECT_EQ(texts[0]->text, "für");
    EXPECT_EQ(texts[1]->text, "the");
    EXPECT_FALSE(texts[2]);
    EXPECT_EQ(surestWord({{read(1, 2, "a", 50)}, {read(1, 2, "b", 60)}, {}}).text, "b");
}

} // namespace
} // namespace morvane
