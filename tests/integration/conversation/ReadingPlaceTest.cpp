#include "ConversationFixture.h"

#include <QAbstractTextDocumentLayout>
#include <QScrollBar>
#include <QTest>
#include <QTextBlock>
#include <QTextLayout>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class ReadingPlaceTest : public ConversationFixture {
protected:
    struct Line {
        QString text;
        int y = 0; ///< In the viewport.
    };

    /// The first line of which more than half is in sight.
    Line topLine() const
    {
        const ConversationLayout &rows = view.rows();
        const int offset = view.verticalScrollBar()->value();
        for (qsizetype row = rows.rowAt(offset); row < view.content().count(); ++row) {
            const ConversationItem item = view.content().item(row);
            const auto &segments = rows.peek(item).segments;
            for (qsizetype i = 0; i < segments.size(); ++i) {
                const QTextDocument *document = rows.laidOut(item, i);
                if (document == nullptr)
                    continue;
                const SegmentFrame frame = rows.segmentFrame(item, i);
                const int top = rows.top(row) + rows.segmentTop(item, i) + frame.gap + frame.header - offset;
                for (QTextBlock block = document->firstBlock(); block.isValid(); block = block.next()) {
                    const QRectF place = document->documentLayout()->blockBoundingRect(block);
                    for (int n = 0; n < block.layout()->lineCount(); ++n) {
                        const QTextLine line = block.layout()->lineAt(n);
                        const double y = top + place.top() + line.y();
                        if (y + line.height() / 2 >= 0)
                            return {block.text().sliced(line.textStart(), line.textLength()), qRound(y)};
                    }
                }
            }
        }
        return {};
    }

    static QString numberedWords(int count)
    {
        QString text;
        for (int i = 0; i < count; ++i)
            text += u"word%1 "_s.arg(i);
        return text;
    }

    static QString firstWord(const Line &line) { return line.text.trimmed().section(u' ', 0, 0); }
};

TEST_F(ReadingPlaceTest, TheLineStaysWhenAnAnswerEndsAndIsFormatted)
{
    startAnswer(
        u"# Title\n\n- an *item*\n- `another`\n\n```\ncode\n```\n\n| a | b |\n|---|---|\n| 1 | 2 |\n\n"_s +
        numberedWords(4000));
    show();
    for (const int above : {600, 1500, 3000}) {
        transcript.setStreaming(0, true);
        settle();
        view.verticalScrollBar()->setValue(view.verticalScrollBar()->maximum() - above);
        settle();
        const Line before = topLine();
        ASSERT_FALSE(before.text.isEmpty());
        endAnswer();
        settle();
        EXPECT_TRUE(topLine().text.contains(firstWord(before))) << topLine().text.toStdString();
        EXPECT_NEAR(topLine().y, before.y, 1);
    }
}

TEST_F(ReadingPlaceTest, TheLineStaysAtAnyWidthAndComesBack)
{
    say(Role::assistant, numberedWords(3000));
    show();
    view.verticalScrollBar()->setValue(view.verticalScrollBar()->maximum() / 2);
    settle();
    const Line before = topLine();
    for (const int width : {700, 500, 380, 900, 1400, 620}) {
        view.resize(width, 500);
        settle();
        EXPECT_TRUE(topLine().text.contains(firstWord(before)))
            << width << ": " << topLine().text.toStdString();
    }
    view.resize(760, 500);
    settle();
    EXPECT_EQ(topLine().text, before.text);
    EXPECT_EQ(topLine().y, before.y);
}

TEST_F(ReadingPlaceTest, TheLineStaysWhileTheAnswerAndTheLogGrow)
{
    startAnswer(numberedWords(1000));
    show();
    view.verticalScrollBar()->setValue(view.verticalScrollBar()->maximum() - 800);
    settle();
    const Line before = topLine();
    for (int i = 0; i < 20; ++i) {
        transcript.appendToken(numberedWords(100));
        activity.log(u"step %1"_s.arg(i), ActivityStep::Kind::tool);
        settle();
        ASSERT_EQ(topLine().text, before.text) << i;
        ASSERT_EQ(topLine().y, before.y);
    }
}

TEST_F(ReadingPlaceTest, TheLineStaysInALargerFont)
{
    say(Role::assistant, numberedWords(3000));
    show();
    view.verticalScrollBar()->setValue(view.verticalScrollBar()->maximum() / 3);
    settle();
    const Line before = topLine();
    QFont font = view.font();
    font.setPointSizeF(font.pointSizeF() * 1.5);
    view.setFont(font);
    settle();
    EXPECT_TRUE(topLine().text.contains(firstWord(before))) << topLine().text.toStdString();
}

TEST_F(ReadingPlaceTest, TheSpaceAboveTheOnlyRowBelongsToIt)
{
    startAnswer(u"Well."_s);
    show();
    EXPECT_EQ(view.rows().rowAt(0), 0);
    EXPECT_EQ(view.rows().rowAt(-5), 0);
}

} // namespace
} // namespace morvane
