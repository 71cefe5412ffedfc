#include "AttachmentFixture.h"

#include "base/Text.h"
#include "support/SamplePdf.h"

#include <QProcess>

namespace morvane {
namespace {

using Kind = SamplePage::Kind;

class DocumentTest : public AttachmentFixture {
protected:
    QString textOf(const QList<SamplePage> &pages) const
    {
        return process(QStringLiteral("a.pdf"), samplePdf(pages)).extractedText;
    }
    /// The document with a password for reading, or with one for its owner only.
    QByteArray encrypted(const QByteArray &pdf, const QString &userPassword) const
    {
        const QString plain = home.write(QStringLiteral("plain.pdf"), pdf);
        const QString locked = home.path(QStringLiteral("locked.pdf"));
        EXPECT_EQ(QProcess::execute(QStringLiteral("qpdf"),
                                    {QStringLiteral("--encrypt"), userPassword, QStringLiteral("owner"),
                                     QStringLiteral("256"), QStringLiteral("--"), plain, locked}),
                  0);
        return home.read(QStringLiteral("locked.pdf"));
    }
};

TEST_F(DocumentTest, DocumentIsFilledAsTold)
{
    const QByteArray pdf = samplePdf({{Kind::text, QStringLiteral("First page.")}});
    const ChatAttachment attachment = process(QStringLiteral("report.pdf"), pdf);
    EXPECT_EQ(attachment.filename, QStringLiteral("report.pdf"));
    EXPECT_EQ(attachment.kind, AttachmentKind::pdf);
    EXPECT_EQ(attachment.data, std::nullopt);
    EXPECT_EQ(attachment.extractedText, QStringLiteral("First page."));
    EXPECT_EQ(attachment.mimeType, QStringLiteral("application/pdf"));
    EXPECT_EQ(attachment.byteSize, pdf.size());
}

TEST_F(DocumentTest, PagesAreJoinedWithAnEmptyLine)
{
    EXPECT_EQ(
        textOf(
            {{Kind::text, QStringLiteral("One")}, {Kind::blank, {}}, {Kind::text, QStringLiteral("Three")}}),
        QStringLiteral("One\n\nThree"));
}

TEST_F(DocumentTest, TextBeyondTheAlphabetComesOut)
{
    const auto text = QStringLiteral("Grüße aus Łódź: 42 €, αβγ, привет");
    EXPECT_EQ(textOf({{Kind::text, text}}), text);
}

TEST_F(DocumentTest, OnlyTheFirstTwoHundredPagesAreRead)
{
    QList<SamplePage> pages;
    QStringList expected;
    for (int page = 1; page <= 250; ++page) {
        pages.append({Kind::text, QStringLiteral("p%1").arg(page)});
        if (page <= 200)
            expected.append(pages.last().text);
    }
    EXPECT_EQ(textOf(pages), expected.join(QStringLiteral("\n\n")));
}

TEST_F(DocumentTest, ThousandPagesAreRead)
{
    QList<SamplePage> pages(1'000, {Kind::text, QStringLiteral("page")});
    EXPECT_EQ(textOf(pages).count(QStringLiteral("page")), 200);
}

TEST_F(DocumentTest, LongTextIsCutAndMarked)
{
    const QList<SamplePage> pages(30, {Kind::text, QStringLiteral("word ").repeated(300)});
    const QString text = textOf(pages);
    const auto mark = QStringLiteral("\n[…truncated…]");
    ASSERT_TRUE(text.endsWith(mark));
    EXPECT_EQ(characterCount(text), 16'000 + characterCount(mark));
}

TEST_F(DocumentTest, ScannedPagesEachHaveTheirLine)
{
    EXPECT_EQ(textOf({{Kind::scanned, QStringLiteral("Dear Sir or Madam")},
                      {Kind::scanned, QStringLiteral("Yours sincerely")}}),
              QStringLiteral("[Scanned page 1]\nDear Sir or Madam\n\n[Scanned page 2]\nYours sincerely"));
}

TEST_F(DocumentTest, ScannedPagesFollowThePagesOfText)
{
    EXPECT_EQ(textOf({{Kind::scanned, QStringLiteral("Scanned cover")},
                      {Kind::text, QStringLiteral("Printed inside")},
                      {Kind::blank, {}},
                      {Kind::scanned, QStringLiteral("Scanned back")}}),
              QStringLiteral("Printed inside\n\n[Scanned page 1]\nScanned cover\n\n[Scanned page "
                             "4]\nScanned back"));
}

TEST_F(DocumentTest, LinesOfAScannedPageAreJoinedByLineFeeds)
{
    EXPECT_EQ(textOf({{Kind::scanned, QStringLiteral("The first line\nThe second line")}}),
              QStringLiteral("[Scanned page 1]\nThe first line\nThe second line"));
}

TEST_F(DocumentTest, ManyScannedPagesKeepTheirOrderAndNumbers)
{
    const QStringList words{"apple", "bridge", "candle", "dolphin", "engine", "forest", "garden"};
    QList<SamplePage> pages;
    QStringList expected;
    for (const QString &word : words) {
        pages.append({Kind::scanned, QStringLiteral("The word is ") + word});
        expected.append(QStringLiteral("[Scanned page %1]\nThe word is %2").arg(pages.size()).arg(word));
        pages.append({Kind::blank, {}});
    }
    EXPECT_EQ(textOf(pages), expected.join(QStringLiteral("\n\n")));
}

TEST_F(DocumentTest, RecognisedTextIsCutAndMarked)
{
    const QString page = QStringLiteral("The quick brown fox jumps over the lazy dog.\n").repeated(36);
    const QString text = textOf(QList<SamplePage>(14, {Kind::scanned, page}));
    const auto mark = QStringLiteral("\n[…truncated…]");
    ASSERT_TRUE(text.endsWith(mark));
    EXPECT_EQ(characterCount(text), 16'000 + characterCount(mark));
}

TEST_F(DocumentTest, DocumentWithoutTextIsRefused)
{
    EXPECT_EQ(failureOf(QStringLiteral("blank.pdf"), samplePdf({{Kind::blank, {}}, {Kind::blank, {}}})),
              QStringLiteral("\"blank.pdf\" contains no readable text — it may be empty or made entirely of "
                             "images that could not be recognized."));
}

TEST_F(DocumentTest, DocumentWithAPasswordCannotBeOpened)
{
    const QByteArray pdf = samplePdf({{Kind::text, QStringLiteral("Secret")}});
    EXPECT_EQ(failureOf(QStringLiteral("a.pdf"), encrypted(pdf, QStringLiteral("password"))),
              QStringLiteral("Could not open \"a.pdf\" as a PDF."));
}

TEST_F(DocumentTest, DocumentWithAnOwnersPasswordOnlyIsRead)
{
    const QByteArray pdf = samplePdf({{Kind::text, QStringLiteral("Not so secret")}});
    EXPECT_EQ(process(QStringLiteral("a.pdf"), encrypted(pdf, {})).extractedText,
              QStringLiteral("Not so secret"));
}

TEST_F(DocumentTest, WhatIsNoDocumentCannotBeOpened)
{
    const auto message = QStringLiteral("Could not open \"a.pdf\" as a PDF.");
    EXPECT_EQ(failureOf(QStringLiteral("a.pdf"), {}), message);
    EXPECT_EQ(failureOf(QStringLiteral("a.pdf"), "just text"), message);
    EXPECT_EQ(failureOf(QStringLiteral("a.pdf"), "%PDF-1.7\n"), message);
}

TEST_F(DocumentTest, PageOfAbsurdSizeDoesNoHarm)
{
    QByteArray pdf = samplePdf({{Kind::scanned, QStringLiteral("Readable")}});
    const qsizetype box = pdf.indexOf("/MediaBox [");
    ASSERT_GT(box, 0);
    const qsizetype end = pdf.indexOf(']', box);
    pdf.replace(box, end - box, QByteArray("/MediaBox [0 0 99999999 99999999").leftJustified(end - box));
    EXPECT_EQ(failureOf(QStringLiteral("a.pdf"), pdf),
              QStringLiteral("\"a.pdf\" contains no readable text — it may be empty or made entirely of "
                             "images that could not be recognized."));
}

} // namespace
} // namespace morvane
