#include "platform/linux/SpokenText.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

TEST(SpokenText, ATextWithinTheLimitIsOnePieceAsItStands)
{
    const QString text = u"First line.\n\nA second one\twith a tab, ünïcödé and 😀."_s;
    EXPECT_EQ(spokenPieces(text), QStringList{text});
}

TEST(SpokenText, NothingToSpeakGivesNoPiece)
{
    EXPECT_TRUE(spokenPieces(QString()).isEmpty());
    EXPECT_TRUE(spokenPieces(u" \n\t "_s).isEmpty());
    EXPECT_TRUE(spokenPieces(QString(QChar(0))).isEmpty());
}

TEST(SpokenText, ControlCharactersBecomeBlanks)
{
    const QString text = u"a"_s + QChar(0) + u'b' + QChar(0x1b) + u'c' + QChar(0x85) + u'd';
    EXPECT_EQ(spokenPieces(text), QStringList{u"a b c d"_s});
}

TEST(SpokenText, LoneSurrogatesAreReplacedAndPairsKept)
{
    const QString text = QString(QChar(0xd83d)) + u'x' + QChar(0xde00) + u"😀"_s + QChar(0xd83d);
    const QString expected = QString(QChar(0xfffd)) + u'x' + QChar(0xfffd) + u"😀"_s + QChar(0xfffd);
    EXPECT_EQ(spokenPieces(text), QStringList{expected});
}

TEST(SpokenText, ALongTextIsCutAfterSentencesWithoutLoss)
{
    const QString text = u"One is here. Two is here. Three is here."_s;
    const QStringList pieces = spokenPieces(text, 20);
    EXPECT_EQ(pieces, (QStringList{u"One is here. "_s, u"Two is here. "_s, u"Three is here."_s}));
    EXPECT_EQ(pieces.join(QString()), text);
}

TEST(SpokenText, ASentenceLongerThanTheLimitIsCutBetweenWords)
{
    const QStringList pieces = spokenPieces(u"alpha beta gamma delta"_s, 12);
    EXPECT_EQ(pieces.join(QString()), u"alpha beta gamma delta"_s);
    EXPECT_EQ(pieces.first(), u"alpha beta "_s);
}

TEST(SpokenText, AnUnbrokenTextIsCutBetweenCharactersThatTheUserPerceives)
{
    const QString family = u"👨‍👩‍👧"_s;
    const QStringList pieces = spokenPieces(family.repeated(5), family.size() * 2 + 3);
    EXPECT_EQ(pieces.join(QString()), family.repeated(5));
    for (const QString &piece : pieces)
        EXPECT_EQ(piece.size() % family.size(), 0) << piece.toStdString();
}

TEST(SpokenText, ACharacterLongerThanTheLimitStillEnds)
{
    const QString text = u'e' + QString(100, QChar(0x301));
    const QStringList pieces = spokenPieces(text, 10);
    EXPECT_EQ(pieces.join(QString()), text);
    for (const QString &piece : pieces)
        EXPECT_LE(piece.size(), 10);
}

TEST(SpokenText, AMillionCharactersArriveWholeInPiecesWithinTheLimit)
{
    const QString text = u"A sentence of the long answer goes like this. "_s.repeated(22'000);
    const QStringList pieces = spokenPieces(text);
    EXPECT_EQ(pieces.join(QString()), text);
    for (const QString &piece : pieces) {
        EXPECT_LE(piece.size(), maximumSpokenLength);
        EXPECT_TRUE(piece.endsWith(". "_L1));
    }
}

} // namespace
} // namespace morvane
