#include "ui/conversation/DocumentBuilder.h"
#include "ui/markdown/MarkdownParser.h"

#include <QAbstractTextDocumentLayout>
#include <QApplication>
#include <QTextBlock>
#include <QTextTable>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class FormattedTextTest : public testing::Test {
protected:
    void show(const QString &source)
    {
        document = markdownDocument(parseMarkdown(source), style);
        document->setTextWidth(600);
    }

    /// The place of the block that begins with `text`, or of the first that is empty.
    QRectF place(const QString &text) const
    {
        for (QTextBlock block = document->firstBlock(); block.isValid(); block = block.next())
            if (text.isEmpty() ? block.text().isEmpty() : block.text().startsWith(text))
                return document->documentLayout()->blockBoundingRect(block);
        ADD_FAILURE() << "not shown: " << text.toStdString();
        return {};
    }

    /// The empty space between two blocks.
    double gap(const QString &above, const QString &below) const
    {
        return place(below).top() - place(above).bottom();
    }

    ConversationStyle style{QApplication::font(), QApplication::palette()};
    std::unique_ptr<QTextDocument> document;
};

TEST_F(FormattedTextTest, ARuleIsALineAndNotABar)
{
    show(u"above\n\n---\n\nbelow"_s);
    EXPECT_LE(place({}).height(), 3);
    EXPECT_GE(gap(u"above"_s, u"below"_s), style.segmentGap);
    EXPECT_LT(gap(u"above"_s, u"below"_s), 4 * style.segmentGap);
}

TEST_F(FormattedTextTest, ATableStandsAsFarFromWhatFollowsAsAParagraphDoes)
{
    show(u"| a |\n|---|\n| last |\n\nbelow\n\nnext"_s);
    const double usual = gap(u"below"_s, u"next"_s);
    EXPECT_NEAR(gap(u"last"_s, u"below"_s) - style.segmentGap * 0.6, usual, 4);
    show(u"| a |\n|---|\n| last |\n\n## Heading\n\nnext\n\n## Other"_s);
    EXPECT_NEAR(gap(u"last"_s, u"Heading"_s) - style.segmentGap * 0.6, gap(u"next"_s, u"Other"_s), 4);
    EXPECT_GT(document->findBlock(document->toPlainText().indexOf(u"Heading"_s)).charFormat().fontWeight(),
              QFont::Normal);
}

TEST_F(FormattedTextTest, ATableAtTheEndLeavesNoBlankLine)
{
    show(u"| a |\n|---|\n| last |"_s);
    EXPECT_LT(document->size().height() - place(u"last"_s).bottom(), style.lineHeight);
}

} // namespace
} // namespace morvane
