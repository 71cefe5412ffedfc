#include "attachments/ReaderAnswer.h"

#include "attachments/PicturePixels.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

using Kind = ReaderAnswer::Kind;

const QByteArray jpeg = QByteArray("\xFF\xD8\xFF\xE0 picture \xFF\xD9");

TEST(ReaderAnswerTest, EveryKindComesOutAsItWentIn)
{
    const QList<ReaderAnswer> answers{{Kind::unchanged, {}},
                                      {Kind::unreadable, {}},
                                      {Kind::jpeg, jpeg},
                                      {Kind::text, {}},
                                      {Kind::text, "Grüße\n\n[Scanned page 2]\nfoo"}};
    for (const ReaderAnswer &answer : answers)
        EXPECT_EQ(ReaderAnswer::parse(answer.serialized()), answer);
}

TEST(ReaderAnswerTest, NoBeginningOfAnAnswerIsTakenForTheWhole)
{
    const QByteArray whole = ReaderAnswer{Kind::text, "text"}.serialized();
    for (qsizetype length = 0; length < whole.size(); ++length)
        EXPECT_EQ(ReaderAnswer::parse(QByteArrayView(whole).first(length)), std::nullopt) << length;
}

TEST(ReaderAnswerTest, NothingMayFollowTheAnswer)
{
    EXPECT_EQ(ReaderAnswer::parse(ReaderAnswer{Kind::text, "text"}.serialized() + '\n'), std::nullopt);
}

TEST(ReaderAnswerTest, ALengthThatWasNotSentIsRefused)
{
    QByteArray bytes = ReaderAnswer{Kind::text, "text"}.serialized();
    bytes[7] = '\x7F';
    EXPECT_EQ(ReaderAnswer::parse(bytes), std::nullopt);
}

TEST(ReaderAnswerTest, AnUnknownKindIsRefused)
{
    QByteArray bytes = ReaderAnswer{Kind::unchanged, {}}.serialized();
    bytes[3] = 'z';
    EXPECT_EQ(ReaderAnswer::parse(bytes), std::nullopt);
}

TEST(ReaderAnswerTest, AnotherMarkIsRefused)
{
    QByteArray bytes = ReaderAnswer{Kind::unchanged, {}}.serialized();
    bytes[0] = 'm';
    EXPECT_EQ(ReaderAnswer::parse(bytes), std::nullopt);
}

TEST(ReaderAnswerTest, PayloadsThatDoNotFitTheirKindAreRefused)
{
    const QList<ReaderAnswer> answers{
        {Kind::unchanged, "x"}, {Kind::unreadable, "x"},       {Kind::jpeg, {}},
        {Kind::jpeg, "GIF89a"}, {Kind::jpeg, jpeg.chopped(2)}, {Kind::text, "\xFF"}};
    for (const ReaderAnswer &answer : answers)
        EXPECT_EQ(ReaderAnswer::parse(answer.serialized()), std::nullopt);
}

TEST(ReaderAnswerTest, PixelsArriveAsTheyWere)
{
    QImage image(3, 2, QImage::Format_RGB32);
    image.fill(Qt::red);
    image.setPixelColor(2, 1, Qt::blue);
    const auto answer = ReaderAnswer::parse(ReaderAnswer{Kind::pixels, pixelBytes(image)}.serialized());
    ASSERT_TRUE(answer);
    EXPECT_EQ(pixelImage(answer->payload), image);
}

TEST(ReaderAnswerTest, PixelsThatAreNoWholePictureAreRefused)
{
    QImage image(3, 2, QImage::Format_RGB32);
    image.fill(Qt::red);
    const QByteArray whole = pixelBytes(image);
    const QByteArray huge("\xff\xff\xff\xff\xff\xff\xff\xff", 8);
    const QByteArray empty(8, '\0');
    const QByteArray wide = QByteArray("\x79\x05\0\0\x01\0\0\0", 8) + QByteArray(1401 * 4, 'x');
    for (const QByteArray &bytes :
         {QByteArray(), whole.first(7), whole.chopped(1), whole + 'x', huge, empty, wide})
        EXPECT_EQ(ReaderAnswer::parse(ReaderAnswer{Kind::pixels, bytes}.serialized()), std::nullopt)
            << bytes.size();
}

} // namespace
} // namespace morvane
