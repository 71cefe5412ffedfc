#include "attachments/ReaderAnswer.h"

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

} // namespace
} // namespace morvane
