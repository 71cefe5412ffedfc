#include "platform/linux/SpokenText.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

TEST(SpokenText, ATextWithinTheLimitIsOnePieceAsItStands)
{
    const QString text = QStringLiteral("First line.\n\nA second one\twith a tab, ünïcödé and 😀.");
    EXPECT_EQ(spokenPieces(text), QStringList{text});
}

TEST(SpokenText, NothingToSpeakGivesNoPiece)
{
    EXPECT_TRUE(spokenPieces(QString()).isEmpty());
    EXPECT_TRUE(spokenPieces(QStringLiteral(" \n\t ")).isEmpty());
    EXPECT_TRUE(spokenPieces(QString(QChar(0))).isEmpty());
}

TEST(SpokenText, ControlCharactersBecomeBlanks)
{
    const QString text = QStringLiteral("a") + QChar(0) + u'b' + QChar(0x1b) + u'c' + QChar(0x85) + u'd';
    EXPECT_EQ(spokenPieces(text), QStringList{QStringLiteral("a b c d")});
}

TEST(SpokenText, LoneSurrogatesAreReplacedAndPairsKept)
{
    const QString text = QString(QChar(0xd83d)) + u'x' + QChar(0xde00) + QStringLiteral("😀") + QChar(0xd83d);
    const QString expected =
        QString(QChar(0xfffd)) + u'x' + QChar(0xfffd) + QStringLiteral("😀") + QChar(0xfffd);
    EXPECT_EQ(spokenPieces(text), QStringList{expected});
}

TEST(SpokenText, ALongTextIsCutAfterSentencesWithoutLoss)
{
    const QString text = QStringLiteral("One is here. Two is here. Three is here.");
    const QStringList pieces = spokenPieces(text, 20);
    EXPECT_EQ(pieces, (QStringList{QStringLiteral("One is here. "), QStringLiteral("Two is here. "),
                                   QStringLiteral("Three is here.")}));
    EXPECT_EQ(pieces.join(QString()), text);
}

TEST(SpokenText, ASentenceLongerThanTheLimitIsCutBetweenWords)
{
    const QStringList pieces = spokenPieces(QStringLiteral("alpha beta gamma delta"), 12);
    EXPECT_EQ(pieces.join(QString()), QStringLiteral("alpha beta gamma delta"));
    EXPECT_EQ(pieces.first(), QStringLiteral("alpha beta "));
}

TEST(SpokenText, AnUnbrokenTextIsCutBetweenCharactersThatTheUserPerceives)
{
    const QString family = QStringLiteral("👨‍👩‍👧");
    const QStringList pieces = spokenPieces(family.repeated(5), family.size() * 2 + 3);
    EXPECT_EQ(pieces.join(QString()), family.repeated(5));
    for (const QString &piece : pieces) {
        EXPECT_EQ(piece.size() % family.size(), 0) << piece.toStdString();
    }
}

TEST(SpokenText, ACharacterLongerThanTheLimitStillEnds)
{
    const QString text = u'e' + QString(100, QChar(0x301));
    const QStringList pieces = spokenPieces(text, 10);
    EXPECT_EQ(pieces.join(QString()), text);
    for (const QString &piece : pieces) {
        EXPECT_LE(piece.size(), 10);
    }
}

TEST(SpokenText, AMillionCharactersArriveWholeInPiecesWithinTheLimit)
{
    const QString text = QStringLiteral("A sentence of the long answer goes like this. ").repeated(22'000);
    const QStringList pieces = spokenPieces(text);
    EXPECT_EQ(pieces.join(QString()), text);
    for (const QString &piece : pieces) {
        EXPECT_LE(piece.size(), maximumSpokenLength);
        EXPECT_TRUE(piece.endsWith(QLatin1String(". ")));
    }
}

} // namespace
} // namespace morvane
