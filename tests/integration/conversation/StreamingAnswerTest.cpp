#include "ConversationFixture.h"

#include <QTextBlock>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class StreamingAnswerTest : public ConversationFixture {
protected:
    /// Streams `text` in batches, each of which is drawn before the next comes.
    void stream(const QString &text, qsizetype batch)
    {
        startAnswer();
        show();
        for (qsizetype at = 0; at < text.size(); at += batch) {
            transcript.appendToken(text.sliced(at, qMin(batch, text.size() - at)));
            view.repaint();
        }
        settle();
    }

    /// Every part of the newest row that is laid out shows what it should, in its own type and width.
    void expectShownAsItIs()
    {
        const ConversationItem item = view.content().item(view.content().count() - 1);
        const auto &segments = view.rows().peek(item).segments;
        int shown = 0;
        for (qsizetype i = 0; i < segments.size(); ++i) {
            const QTextDocument *document = view.rows().laidOut(item, i);
            if (document == nullptr)
                continue;
            ++shown;
            const bool isBody = segments.at(i).part == RowPart::body;
            EXPECT_EQ(document->toPlainText(), view.rows().plainText(item, i)) << "segment " << i;
            EXPECT_EQ(document->defaultFont(),
                      isBody ? view.rows().style().font : view.rows().style().captionFont)
                << "segment " << i;
            EXPECT_EQ(document->textWidth(), view.rows().segmentFrame(item, i).width) << "segment " << i;
        }
        EXPECT_GT(shown, 0);
    }

    QString shownText()
    {
        view.setCurrentRow(view.content().count() - 1);
        view.selectAll();
        return view.selectedText();
    }
};

TEST_F(StreamingAnswerTest, WhatIsSelectedInAMessageThatChangesIsNoLonger)
{
    say(Role::user, u"one"_s);
    startAnswer(u"an answer"_s);
    show();
    view.selectAll();
    ASSERT_FALSE(view.selectedText().isEmpty());
    transcript.setErrorMessage(1, u"No network."_s);
    settle();
    EXPECT_EQ(view.selectedText(), QString());
}

TEST_F(StreamingAnswerTest, ALongOneKeepsItsTypeAndWidth)
{
    const QString text = u"several words of an answer "_s.repeated(600);
    for (const qsizetype batch : {200, 1999, 3000, 7000}) {
        transcript.reset({});
        stream(text, batch);
        expectShownAsItIs();
        EXPECT_EQ(shownText(), text + u"\nMorvane is responding…"_s);
    }
}

TEST_F(StreamingAnswerTest, BlankLinesBetweenBatchesStay)
{
    const QString text = u"First.\n\n\nSecond.\n\nThird.\n"_s.repeated(30);
    for (const qsizetype batch : {1, 7, 8, 9, 100}) {
        transcript.reset({});
        stream(text + u'.', batch);
        expectShownAsItIs();
        EXPECT_EQ(shownText(), text + u".\nMorvane is responding…"_s) << "batches of " << batch;
    }
}

TEST_F(StreamingAnswerTest, AWindowThatIsResizedMeanwhileShowsItAtTheNewWidth)
{
    stream(u"several words of an answer "_s.repeated(300), 500);
    view.resize(500, 400);
    transcript.appendToken(u"and more "_s.repeated(400));
    settle();
    expectShownAsItIs();
}

TEST_F(StreamingAnswerTest, WhatIsShownAtTheEndIsTheWholeAnswer)
{
    const QString text = u"several words of an answer. "_s.repeated(400).trimmed();
    stream(text, 333);
    endAnswer();
    settle();
    EXPECT_EQ(shownText().replace(u'\n', u' '), text);
}

} // namespace
} // namespace morvane
