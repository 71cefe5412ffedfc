#include "ConversationFixture.h"

#include "ui/conversation/DocumentBuilder.h"

#include <QScrollBar>
#include <QTest>
#include <QTextBlock>
#include <QTextLayout>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// What was laid out for the frames of a test, in usual letters.
class LongTextTest : public ConversationFixture {
protected:
    void fail(const QString &error)
    {
        ChatMessage answer = message(Role::assistant, u"Well."_s);
        answer.errorMessage = error;
        transcript.append(answer);
    }

    /// The whole row as it is copied by a selection from end to end.
    QString selectRow(qsizetype row)
    {
        view.setCurrentRow(row);
        view.selectAll();
        return view.selectedText();
    }

    /// One pass, and the segment that goes beyond its limit.
    static constexpr qsizetype allowed = 5 * segmentLimit;
};

const QStringList &hostileTexts()
{
    static const QStringList texts{QString(1'000'000, u'x'),
                                   u'e' + QString(1'000'000, QChar(0x301)),
                                   u"several words "_s.repeated(50'000),
                                   u"line\n"_s.repeated(50'000),
                                   u'a' + QString(500'000, u' ') + u'b',
                                   QString(300'000, QChar(0x6f22)),
                                   u"✅👩‍👩‍👧‍👦"_s.repeated(20'000),
                                   QString(300'000, u'\n')};
    return texts;
}

TEST_F(LongTextTest, TheScrollBarDoesNotChangeTheWidthOfTheText)
{
    // A text that is long but shows little would fit without the bar, be laid out anew, and not fit, for
    // ever.
    const ConversationItem first{.kind = ConversationItem::Kind::message, .index = 0};
    view.resize(545, 560); // narrower than a column may be
    say(Role::assistant, u"Short."_s);
    show();
    ASSERT_FALSE(view.verticalScrollBar()->isVisible());
    const int width = view.rows().rowFrame(first).width;
    say(Role::assistant, u"> "_s.repeated(10'000) + u"deep"_s);
    settle();
    EXPECT_EQ(view.rows().rowFrame(first).width, width);
    say(Role::assistant, u"line\n\n"_s.repeated(200));
    settle();
    ASSERT_TRUE(QTest::qWaitFor([this] { return view.verticalScrollBar()->isVisible(); }))
        << view.verticalScrollBar()->maximum();
    EXPECT_EQ(view.rows().rowFrame(first).width, width);
    EXPECT_LE(view.rows().rowFrame(first).left + width, view.viewport()->width());
}

TEST_F(LongTextTest, AnErrorIsLaidOutOnlyWhereItIsSeen)
{
    for (const QString &text : hostileTexts()) {
        transcript.reset({});
        fail(text);
        show();
        EXPECT_LE(view.rows().dearestPass(), allowed) << text.first(5).toStdString();
        EXPECT_LT(view.rows().documentCount(), 64);
        EXPECT_EQ(remaining(), 0);
    }
}

TEST_F(LongTextTest, AnErrorIsShownToItsLastCharacter)
{
    fail(u"first "_s + QString(30'000, u'x') + u"\n\nlast"_s);
    show();
    EXPECT_EQ(selectRow(0), u"Well.\nError: first "_s + QString(30'000, u'x') + u"\n\nlast"_s);
}

TEST_F(LongTextTest, AMessageOfTheUserIsLaidOutOnlyWhereItIsSeen)
{
    for (const QString &text : hostileTexts()) {
        transcript.reset({message(Role::user, text)});
        show();
        EXPECT_LE(view.rows().dearestPass(), allowed) << text.first(5).toStdString();
    }
}

TEST_F(LongTextTest, AnAnswerIsLaidOutOnlyWhereItIsSeen)
{
    for (const QString &text : hostileTexts()) {
        for (const QString &opening : {u""_s, u"```\n"_s, u"| "_s, u"- "_s}) {
            transcript.reset({message(Role::assistant, opening + text)});
            show();
            EXPECT_LE(view.rows().dearestPass(), allowed) << (opening + text.first(5)).toStdString();
        }
    }
}

TEST_F(LongTextTest, WhatIsLaidOutKeepsItsShapesForDrawing)
{
    const auto document = plainDocument(u"one\ntwo\n✅"_s, QFont(), Qt::black);
    setDocumentWidth(*document, 200, DocumentFit::narrow);
    for (QTextBlock block = document->begin(); block.isValid(); block = block.next())
        EXPECT_TRUE(block.layout()->cacheEnabled());
}

TEST_F(LongTextTest, APassTakesOnNoMoreThanItSaysAfterwards)
{
    for (const QString &text : {u"a line\n"_s.repeated(50'000), u"several words "_s.repeated(50'000),
                                u"[*_`<"_s.repeated(50'000), QString(300'000, QChar(0x6f22))}) {
        transcript.reset({message(Role::assistant, text)});
        show();
        EXPECT_LE(view.rows().dearestPass(), 3 * segmentLimit) << text.first(5).toStdString();
    }
}

TEST_F(LongTextTest, AnAnswerThatGrowsByAMegabyteAtOnceIsLaidOutOnlyWhereItIsSeen)
{
    for (const QString &text : hostileTexts()) {
        transcript.reset({});
        startAnswer(u"Well. "_s);
        show();
        transcript.appendToken(text);
        show();
        EXPECT_LE(view.rows().dearestPass(), allowed) << text.first(5).toStdString();
    }
}

TEST_F(LongTextTest, NamesOfFilesAreBounded)
{
    ChatMessage sent = message(Role::user, u"Look."_s);
    ChatAttachment file;
    file.filename = QString(1'000'000, u'n');
    sent.attachments = {file};
    transcript.append(sent);
    show();
    EXPECT_LE(view.rows().dearestPass(), allowed);
    EXPECT_EQ(selectRow(0), u"Look.\n"_s + QString(255, u'n') + u'…');
}

TEST_F(LongTextTest, AFullWindowIsShownAfterSomeFrames)
{
    say(Role::user, u"several words "_s.repeated(5'000));
    view.resize(1800, 2400);
    show();
    EXPECT_LE(view.rows().dearestPass(), allowed);
    const ConversationItem item = view.content().item(0);
    const auto &segments = view.rows().peek(item).segments;
    const int bottom = view.rows().rowHeight(item);
    for (qsizetype i = 0; i < segments.size(); ++i) {
        const int top = view.rows().segmentTop(item, i);
        if (top + segments.at(i).height > bottom - view.viewport()->height() + 50)
            EXPECT_TRUE(segments.at(i).isMeasured) << i;
    }
    EXPECT_EQ(remaining(), 0);
}

TEST_F(LongTextTest, WhatIsDearToDrawIsKeptAsAPicture)
{
    // Letters with many marks are dear.
    say(Role::user, (u"a"_s + QString(30, QChar(0x0301)) + u' ').repeated(100));
    show();
    EXPECT_GT(view.rows().pictureBytes(), 0);
}

} // namespace
} // namespace morvane
