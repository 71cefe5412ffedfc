#include "recognition/LetterReader.h"

#include "SampleNetwork.h"

#include "attachments/reader/RecognitionData.h"
#include "recognition/ByteReader.h"

#include <gmock/gmock.h>

namespace morvane {
namespace {

/// A picture whose middle row has 0 and 254 by turns, so that these are its ink and its paper.
GrayPicture noise(int width)
{
    GrayPicture line{width, SampleNetwork::height, {}};
    uint32_t random = 7;
    for (int pixel = 0; pixel < width * line.height; ++pixel) {
        random = random * 1'664'525 + 1'013'904'223;
        const bool isMiddle = pixel / width == line.height / 2;
        line.pixels.push_back(isMiddle ? uint8_t(pixel % 2 * 254) : uint8_t((random >> 24) % 255));
    }
    return line;
}

std::vector<ReadWord> likeliest(const std::string &places)
{
    const std::vector<std::string> letters{" ", "a", "ß", ""};
    std::vector<float> likelihoods;
    for (const char place : places)
        for (const char letter : {' ', 'a', 's', '-'})
            likelihoods.push_back(place == letter ? 0.7F : 0.1F);
    return likeliestWords(likelihoods, letters, 3);
}

TEST(LetterReaderTest, ANetworkIsWorkedOutByTheBook)
{
    const SampleNetwork sample;
    const std::string data = sample.data();
    LetterReader reader;
    ASSERT_TRUE(reader.prepare(data));
    int64_t start = 0;
    std::memcpy(&start, data.data() + 4 + 8 * 17, sizeof start);
    ByteReader bytes(std::span(data).subspan(std::size_t(start)));
    LetterNetwork network;
    ASSERT_TRUE(network.read(bytes));
    for (const int width : {3, 4, 65, 300}) {
        const GrayPicture line = noise(width);
        const std::vector<float> likelihoods = network.likelihoods(line);
        const std::vector<double> expected = sample.likelihoods(line.pixels, width);
        ASSERT_EQ(likelihoods.size(), expected.size());
        if (width < 4)
            continue; // too few pixels to tell ink from paper
        // One number of a layer may be rounded the other way.
        for (std::size_t at = 0; at < expected.size(); ++at)
            EXPECT_NEAR(likelihoods[at], expected[at], 0.02) << width << ' ' << at;
    }
}

TEST(LetterReaderTest, APictureOfAnotherHeightOrWithoutWidthHasNoWords)
{
    const std::string data = SampleNetwork().data();
    LetterReader reader;
    ASSERT_TRUE(reader.prepare(data));
    EXPECT_TRUE(reader.read({}).empty());
    EXPECT_TRUE(reader.read({2, 36, std::vector<uint8_t>(72)}).empty());
    EXPECT_TRUE(reader.read({9, 35, std::vector<uint8_t>(9 * 35)}).empty());
}

TEST(LetterReaderTest, DamagedDataIsRefusedWhereverItEnds)
{
    const std::string data = SampleNetwork().data();
    for (std::size_t size = 0; size < data.size(); ++size)
        EXPECT_FALSE(LetterReader().prepare(std::span(data).first(size))) << size;
}

TEST(LetterReaderTest, WhatIsOfAnotherFormIsLeftToTheLibrary)
{
    SampleNetwork otherEnd;
    otherEnd.lastLayer = "SoftmaxNoCTC";
    EXPECT_FALSE(LetterReader().prepare(otherEnd.data()));
    SampleNetwork otherRow;
    otherRow.rowLayer = "Relu";
    EXPECT_FALSE(LetterReader().prepare(otherRow.data()));
    SampleNetwork inParts;
    inParts.partsOfACode = 2;
    EXPECT_FALSE(LetterReader().prepare(inParts.data()));
    SampleNetwork hebrew;
    hebrew.letters[1] = "א";
    EXPECT_FALSE(LetterReader().prepare(hebrew.data()));
}

TEST(LetterReaderTest, TheLanguageDataOfTheSystemIsRead)
{
    const auto data = RecognitionData::find();
    ASSERT_TRUE(data);
    std::vector<char> english;
    ASSERT_TRUE(RecognitionData::read((data->folder + "/eng.traineddata").c_str(), &english));
    EXPECT_TRUE(LetterReader().prepare(english));
}

TEST(LetterReaderTest, ALetterThatGoesOnIsOneAndOneBehindNothingIsNew)
{
    const std::vector<ReadWord> words = likeliest("-aaa-as s--s  -");
    ASSERT_EQ(words.size(), 2U);
    EXPECT_EQ(words[0].word.text, "aaß");
    EXPECT_EQ(words[0].left, 3);
    EXPECT_EQ(words[0].right, 21);
    EXPECT_EQ(words[1].word.text, "ßß");
    EXPECT_EQ(words[1].left, 24);
    EXPECT_EQ(words[1].right, 36);
    EXPECT_NEAR(words[1].word.confidence, 87.5, 0.5);
}

TEST(LetterReaderTest, NothingIsNoWord)
{
    EXPECT_TRUE(likeliest("").empty());
    EXPECT_TRUE(likeliest("---").empty());
    EXPECT_TRUE(likeliest("  - ").empty());
}

} // namespace
} // namespace morvane
