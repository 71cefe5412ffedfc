#include "recognition/DistinctWords.h"
#include "recognition/LinePicture.h"
#include "recognition/PlainPicture.h"
#include "recognition/WordBounds.h"

#include <gmock/gmock.h>

namespace morvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr uint8_t paper = 240;
constexpr uint8_t letter = 10;

class WordPicturesTest : public testing::Test {
protected:
    void draw(const Box &box, uint8_t shade = letter)
    {
        for (int y = box.top; y < box.bottom; ++y)
            for (int x = box.left; x < box.right; ++x)
                picture.pixels[std::size_t(y * picture.width + x)] = shade;
    }

    /// A letter of two strokes that stands on row 20, and the box that is found around it, with some room.
    Box drawWord(int left, int top = 10)
    {
        draw({left, top, left + 3, top + 10});
        draw({left + 3, top + 6, left + 12, top + 8});
        return {left - 1, top - 1, left + 13, top + 11};
    }

    GrayPicture picture{200, 60, std::vector<uint8_t>(std::size_t(200 * 60), paper)};
};

TEST_F(WordPicturesTest, WordsThatLookTheSameAreOneInWhateverLine)
{
    const FoundLine first{{0, 8, 100, 22}, 20, 8, 22, {drawWord(10), drawWord(40)}};
    const FoundLine second{{0, 38, 100, 52}, 50, 38, 52, {drawWord(70, 40)}};
    const DistinctWords distinct(picture, {first, second});
    EXPECT_EQ(distinct.count(), 1);
    EXPECT_THAT(distinct.picturesOf(0), ElementsAre(0, 0));
    EXPECT_THAT(distinct.picturesOf(1), ElementsAre(0));
    EXPECT_THAT(distinct.newWordsOf(0), ElementsAre(0));
    EXPECT_THAT(distinct.newWordsOf(1), IsEmpty());
}

TEST_F(WordPicturesTest, OnePixelMakesAnotherWord)
{
    const FoundLine line{{0, 8, 100, 22}, 20, 8, 22, {drawWord(10), drawWord(40), drawWord(70)}};
    draw({47, 11, 48, 12}, 180);
    const DistinctWords distinct(picture, {line});
    EXPECT_THAT(distinct.picturesOf(0), ElementsAre(0, 1, 0));
    EXPECT_THAT(distinct.newWordsOf(0), ElementsAre(0, 1));
}

TEST_F(WordPicturesTest, TheSameMarkAtAnotherHeightIsAnotherWord)
{
    // As a comma and an apostrophe are.
    draw({10, 10, 12, 13});
    draw({30, 19, 32, 22});
    const DistinctWords distinct(picture, {{{0, 8, 100, 24}, 20, 8, 24, {{9, 9, 13, 14}, {29, 18, 33, 23}}}});
    EXPECT_EQ(distinct.count(), 2);
}

TEST_F(WordPicturesTest, WordsAreToldApartOnAnyGround)
{
    draw({0, 30, 200, 60}, 255);
    const FoundLine onPaper{{0, 8, 100, 22}, 20, 8, 22, {drawWord(10)}};
    const FoundLine onWhite{{0, 38, 100, 52}, 50, 38, 52, {drawWord(10, 40)}};
    EXPECT_EQ(DistinctWords(picture, {onPaper, onWhite}).count(), 2);
    EXPECT_EQ(
        DistinctWords(picture, {FoundLine{{0, 0, 10, 10}, 8, 0, 10, {{2, 2, 8, 8}, {3, 2, 8, 8}}}}).count(),
        1);
}

TEST_F(WordPicturesTest, AMarkBetweenTwoWordsBelongsToTheNearer)
{
    const Box one = drawWord(10);
    const Box two = drawWord(40);
    draw({25, 18, 27, 22}); // a comma behind the first
    FoundLine line{{9, 8, 53, 22}, 20, 8, 22, {one, two}};
    includeMarks(picture, line);
    EXPECT_EQ(line.words[0].right, 27);
    EXPECT_EQ(line.words[1].left, 39);
    draw({37, 9, 38, 12}); // an opening quotation mark
    line = {{9, 8, 53, 22}, 20, 8, 22, {one, two}};
    includeMarks(picture, line);
    EXPECT_EQ(line.words[0].right, 27);
    EXPECT_EQ(line.words[1].left, 37);
}

TEST_F(WordPicturesTest, AMarkBehindTheLastWordBelongsToTheLine)
{
    const Box word = drawWord(10);
    draw({24, 18, 26, 20});
    FoundLine line{{9, 8, 23, 22}, 20, 8, 22, {word}};
    includeMarks(picture, line);
    EXPECT_GE(line.words[0].right, 26);
    EXPECT_GE(line.box.right, 26);
    // What is farther away is none.
    draw({24, 18, 26, 20}, paper);
    draw({60, 8, 70, 22});
    line = {{9, 8, 23, 22}, 20, 8, 22, {word}};
    includeMarks(picture, line);
    EXPECT_LT(line.words[0].right, 60);
}

TEST_F(WordPicturesTest, TheWordsOfALinePictureStandInOrderAndHaveTheirColumns)
{
    const FoundLine line{
        {9, 8, 113, 22}, 20, 8, 22, {drawWord(10), drawWord(40), drawWord(70), drawWord(100)}};
    const LinePicture drawn = linePicture(picture, line, {0, 2, 3});
    ASSERT_EQ(drawn.slots.size(), 3U);
    EXPECT_EQ(drawn.picture.height, LinePicture::height);
    int before = 0;
    for (const LinePicture::Slot &slot : drawn.slots) {
        EXPECT_GE(slot.left, before);
        EXPECT_LT(slot.left, slot.right);
        before = slot.right;
        bool hasInk = false;
        for (int x = slot.left; x < slot.right; ++x)
            hasInk = hasInk || drawn.picture.row(LinePicture::height / 2)[x] < 100;
        EXPECT_TRUE(hasInk);
    }
    EXPECT_LE(before, drawn.picture.width);
    // The second word is left out, and the room that it took.
    const LinePicture whole = linePicture(picture, line, {0, 1, 2, 3});
    EXPECT_LT(drawn.picture.width, whole.picture.width - 20);
}

TEST_F(WordPicturesTest, BetweenWordsThatWereApartIsNothingButGround)
{
    const FoundLine line{{9, 8, 83, 22}, 20, 8, 22, {drawWord(10), drawWord(40), drawWord(70)}};
    const LinePicture drawn = linePicture(picture, line, {0, 2});
    const int middle = (drawn.slots[0].right + drawn.slots[1].left) / 2;
    for (int y = 0; y < LinePicture::height; ++y)
        EXPECT_NEAR(drawn.picture.row(y)[middle], paper, 3) << y;
}

TEST_F(WordPicturesTest, AWordAtThePicturesEdgeIsDrawn)
{
    draw({0, 0, 12, 10});
    draw({190, 50, 200, 60});
    EXPECT_EQ(linePicture(picture, {{0, 0, 12, 10}, 9, 0, 10, {{0, 0, 12, 10}}}, {0}).slots.size(), 1U);
    EXPECT_EQ(linePicture(picture, {{190, 50, 200, 60}, 60, 50, 60, {{190, 50, 200, 60}}}, {0}).slots.size(),
              1U);
}

TEST_F(WordPicturesTest, LightTextOnADarkGroundIsTurnedRoundAndTheOtherIsNot)
{
    draw({0, 0, 96, 60}, 20);
    draw({10, 10, 14, 20}, 220);
    draw({150, 10, 154, 20}, letter);
    const GrayPicture plain = plainPicture(picture);
    EXPECT_EQ(plain.row(5)[5], 255 - 20);
    EXPECT_EQ(plain.row(15)[12], 255 - 220);
    EXPECT_EQ(plain.row(5)[180], paper);
    EXPECT_EQ(plain.row(15)[152], letter);
}

} // namespace
} // namespace morvane
