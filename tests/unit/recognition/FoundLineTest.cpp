#include "recognition/FoundLine.h"

#include <gmock/gmock.h>

namespace morvane {
namespace {

using testing::ElementsAre;

FoundLine line(int left, int top, int right, int bottom)
{
    return {{left, top, right, bottom}, bottom - 3, top, bottom, {{left, top, right, bottom}}};
}

std::vector<Box> boxes(const std::vector<FoundLine> &lines)
{
    std::vector<Box> all;
    for (const FoundLine &one : lines)
        all.push_back(one.box);
    return all;
}

TEST(StripsTest, TheyCoverThePictureAndOverlapByALine)
{
    for (const int count : {1, 2, 3, 7}) {
        const auto parts = strips(1081, count, 64);
        ASSERT_EQ(parts.size(), std::size_t(count));
        EXPECT_EQ(parts.front().top, 0);
        EXPECT_EQ(parts.back().bottom, 1081);
        for (std::size_t at = 1; at < parts.size(); ++at)
            EXPECT_EQ(parts[at - 1].bottom - parts[at].top, 64);
    }
}

TEST(StripsTest, ALowPictureIsNotLeft)
{
    const auto parts = strips(30, 1, 64);
    EXPECT_EQ(parts.front().top, 0);
    EXPECT_EQ(parts.front().bottom, 30);
}

TEST(MergedLinesTest, ALineInTheOverlapComesOnce)
{
    const std::vector<Strip> parts{{0, 132, {line(10, 100, 200, 115)}}, {68, 200, {line(11, 101, 199, 115)}}};
    EXPECT_THAT(boxes(mergedLines(parts, 200)), ElementsAre(Box{10, 100, 200, 115}));
}

TEST(MergedLinesTest, OfALineThatOneStripCutsTheWholeOneCounts)
{
    const FoundLine whole = line(10, 120, 200, 140);
    const FoundLine cutBelow = line(10, 120, 200, 132);
    EXPECT_THAT(mergedLines({{0, 132, {cutBelow}}, {68, 200, {whole}}}, 200), ElementsAre(whole));
    const FoundLine other = line(10, 60, 200, 80);
    const FoundLine cutAbove = line(10, 68, 200, 80);
    EXPECT_THAT(mergedLines({{0, 132, {other}}, {68, 200, {cutAbove}}}, 200), ElementsAre(other));
}

TEST(MergedLinesTest, ALineAtThePicturesOwnEdgeIsNotCut)
{
    const FoundLine first = line(10, 0, 200, 12);
    const FoundLine same = line(12, 1, 198, 12);
    EXPECT_THAT(mergedLines({{0, 20, {first}}, {0, 20, {same}}}, 20), ElementsAre(first));
}

TEST(MergedLinesTest, LinesBesideOrBelowEachOtherAreNotTheSame)
{
    const std::vector<Strip> parts{{0, 132, {line(10, 100, 90, 115)}},
                                   {68, 200, {line(100, 100, 200, 115), line(10, 113, 90, 128)}}};
    EXPECT_THAT(boxes(mergedLines(parts, 200)),
                ElementsAre(Box{10, 100, 90, 115}, Box{100, 100, 200, 115}, Box{10, 113, 90, 128}));
}

TEST(MergedLinesTest, TheyReadFromTopToBottomAndOnOneRowFromLeftToRight)
{
    // The right one is a little higher, as larger type is.
    const std::vector<Strip> parts{
        {0,
         400,
         {line(10, 300, 90, 315), line(300, 96, 400, 116), line(10, 100, 90, 115), line(5, 20, 9, 30)}}};
    EXPECT_THAT(boxes(mergedLines(parts, 400)), ElementsAre(Box{5, 20, 9, 30}, Box{10, 100, 90, 115},
                                                            Box{300, 96, 400, 116}, Box{10, 300, 90, 315}));
}

} // namespace
} // namespace morvane
