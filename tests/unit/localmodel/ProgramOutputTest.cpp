#include "localmodel/ProgramOutput.h"

#include <QStringList>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// A frame as the program shows it: over the lines of the one before, which it wipes.
QByteArray frame(const QList<QByteArray> &lines, int linesBefore)
{
    QByteArray bytes = "\x1b[?2026h\x1b[?25l";
    for (int line = 1; line < linesBefore; ++line)
        bytes += "\x1b[A";
    bytes += "\x1b[1G";
    for (qsizetype line = 0; line < lines.size(); ++line)
        bytes += lines.at(line) + "\x1b[K" + (line + 1 < lines.size() ? "\n" : "");
    return bytes + "\x1b[?25h\x1b[?2026l";
}

const QByteArray secondLine = "pulling 6a0746a1ec1a:  42% ▕██ ▏ 1.9 GB/4.7 GB";

TEST(ProgramOutputTest, TheNewestLineOfAFrameIsTaken)
{
    ProgramOutput output;
    output.append(frame({"pulling manifest"}, 0));
    EXPECT_EQ(output.takeLine(), u"pulling manifest"_s);
    EXPECT_EQ(output.takeLine(), std::nullopt);
    output.append(frame({"pulling manifest", secondLine}, 1));
    EXPECT_EQ(output.takeLine(), QString::fromUtf8(secondLine));
}

TEST(ProgramOutputTest, FramesMayBeCutAnywhere)
{
    const QByteArray frames = frame({"pulling manifest"}, 0) + frame({"pulling manifest", secondLine}, 1) +
                              frame({"pulling manifest", secondLine, "verifying ❄️"}, 2);
    ProgramOutput whole;
    whole.append(frames);
    for (qsizetype first = 0; first <= frames.size(); ++first) {
        for (qsizetype second : {first, first + 1, first + 7}) {
            second = std::min(second, frames.size());
            ProgramOutput output;
            QStringList lines;
            for (const QByteArray &piece :
                 {frames.first(first), frames.sliced(first, second - first), frames.sliced(second)}) {
                output.append(piece);
                if (const auto line = output.takeLine())
                    lines.append(*line);
            }
            // Never half a line, and never an upper line of a frame whose newest is still to come.
            for (const QString &line : std::as_const(lines))
                ASSERT_TRUE(
                    QStringList({u"pulling manifest"_s, QString::fromUtf8(secondLine), u"verifying ❄️"_s})
                        .contains(line))
                    << line.toStdString() << " at " << first;
            ASSERT_EQ(lines.constLast(), u"verifying ❄️"_s) << first;
            ASSERT_EQ(output.text(), whole.text()) << first;
        }
    }
}

TEST(ProgramOutputTest, AFrameIsLookedAtWhenItIsWhole)
{
    const QByteArray bytes = frame({"pulling manifest", secondLine}, 0);
    ProgramOutput output;
    output.append(bytes.first(bytes.indexOf('\n') + 1));
    EXPECT_EQ(output.takeLine(), std::nullopt);
    output.append(bytes.sliced(bytes.indexOf('\n') + 1));
    EXPECT_EQ(output.takeLine(), QString::fromUtf8(secondLine));
}

TEST(ProgramOutputTest, PlainLinesAreTakenAsTheyEnd)
{
    ProgramOutput output;
    output.append("pulling man");
    EXPECT_EQ(output.takeLine(), std::nullopt);
    output.append("ifest\r\n\n   \nsecond\r");
    EXPECT_EQ(output.takeLine(), u"second"_s);
    output.append("third");
    output.append("\n");
    EXPECT_EQ(output.takeLine(), u"third"_s);
}

TEST(ProgramOutputTest, TheTailIsTheLastThreeLines)
{
    ProgramOutput output;
    EXPECT_EQ(output.tail(), QString());
    output.append("one\ntwo\n\nthree\r\nError: no\x1b[31m space\x1b[0m left  \n");
    EXPECT_EQ(output.tail(), u"two\nthree\nError: no space left"_s);
}

TEST(ProgramOutputTest, AnEndlessLineTakesNoEndlessMemory)
{
    ProgramOutput output;
    for (int piece = 0; piece < 100; ++piece)
        output.append(QByteArray(100'000, 'x'));
    EXPECT_LE(output.text().size(), 2 * ProgramOutput::mostKept);
    EXPECT_EQ(output.tail().size(), 1000);
    output.append("\n");
    EXPECT_LE(output.takeLine()->size(), 4096);
    output.append("\x1b]0;" + QByteArray(1'000'000, 'x'));
    output.append("\nError: the end\n");
    EXPECT_EQ(output.takeLine(), u"Error: the end"_s);
}

} // namespace
} // namespace morvane
