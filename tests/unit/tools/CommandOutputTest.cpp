#include "tools/CommandOutput.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

constexpr qsizetype mebibyte = 1 << 20;

TEST(CommandOutputTest, KeepsTheTextWithoutBlanksInFront)
{
    CommandOutput output;
    EXPECT_EQ(output.text(), "");
    output.append(" \n\t");
    output.append("\r\n one ");
    output.append(" two\n");
    output.finish();
    EXPECT_EQ(output.text(), "one  two\n");
}

TEST(CommandOutputTest, TellsTheBlanksInFrontApart)
{
    CommandOutput output;
    EXPECT_EQ(output.blanksInFront(), "");
    output.append(" \n\t");
    output.append("\r\n one ");
    output.append(" two\n");
    EXPECT_EQ(output.blanksInFront(), " \n\t\r\n ");
}

TEST(CommandOutputTest, KeepsNoMoreBlanksInFrontThanAnAnswerHolds)
{
    CommandOutput output;
    for (int i = 0; i < 100; ++i)
        output.append(QByteArray(65536, ' '));
    output.append("end");
    EXPECT_EQ(output.blanksInFront(), QString(8'000, u' '));
    EXPECT_EQ(output.text(), "end");
}

TEST(CommandOutputTest, CharactersMayComeInPieces)
{
    const QByteArray text = "é€😀é";
    for (qsizetype first = 0; first <= text.size(); ++first) {
        for (qsizetype second = first; second <= text.size(); ++second) {
            CommandOutput output;
            output.append(text.first(first));
            output.append(text.sliced(first, second - first));
            output.append(text.sliced(second));
            output.finish();
            EXPECT_EQ(output.text(), text) << first << ", " << second;
        }
    }
}

TEST(CommandOutputTest, OneByteThatIsNoUtf8LosesTheWholeStream)
{
    for (const QByteArray &bad :
         {QByteArray("\xff"), QByteArray("\x80"), QByteArray("\xc3("), QByteArray("\xe2\x82("),
          QByteArray("\xf0\x9f\x98("), QByteArray("\xed\xa0\x80"), QByteArray("\xf8\x88\x80\x80")}) {
        CommandOutput output;
        output.append("good " + bad);
        output.append(" more");
        output.finish();
        EXPECT_EQ(output.text(), "") << bad.toHex().constData();
    }
}

TEST(CommandOutputTest, ABadByteFarBehindWhatIsKeptLosesTheWholeStream)
{
    CommandOutput output;
    for (int i = 0; i < 40; ++i)
        output.append(QByteArray(65536, 'x'));
    output.append("\xff");
    output.finish();
    EXPECT_EQ(output.text(), "");
}

TEST(CommandOutputTest, AnUnfinishedCharacterIsAFaultOnlyAtTheEndOfTheStream)
{
    CommandOutput output;
    output.append("one \xe2\x82");
    EXPECT_EQ(output.text(), "one ");
    output.finish();
    EXPECT_EQ(output.text(), "");
}

TEST(CommandOutputTest, WhatCannotReachTheAnswerIsNotKept)
{
    CommandOutput output;
    for (int i = 0; i < 100; ++i)
        output.append(QByteArray(65536, 'x'));
    EXPECT_EQ(output.text().size(), mebibyte + 1);
}

TEST(CommandOutputTest, BlanksBeforeTextThatIsNotKeptAreNotTheEnd)
{
    CommandOutput blanks;
    blanks.append("a" + QByteArray(2 * mebibyte, ' '));
    blanks.finish();
    EXPECT_EQ(blanks.text().trimmed(), "a");

    CommandOutput text;
    text.append("a" + QByteArray(2 * mebibyte, ' ') + "b");
    text.finish();
    EXPECT_EQ(text.text().trimmed().size(), mebibyte + 1);
}

TEST(CommandOutputTest, BlanksInFrontOfLateTextTakeNoRoom)
{
    CommandOutput output;
    for (int i = 0; i < 40; ++i)
        output.append(QByteArray(65536, '\n'));
    output.append("late");
    EXPECT_EQ(output.text(), "late");
}

TEST(CommandOutputTest, ACharacterAtTheBorderOfWhatIsKeptIsNotCutInHalf)
{
    CommandOutput output;
    output.append(QByteArray(mebibyte - 2, 'x') + "€ and more");
    output.finish();
    EXPECT_FALSE(output.text().contains(QChar::ReplacementCharacter));
}

} // namespace
} // namespace morvane
