#include "AttachmentFixture.h"

#include "attachments/reader/DocumentText.h"
#include "base/Text.h"
#include "support/SamplePdf.h"

#include <QProcess>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using Kind = SamplePage::Kind;

class DocumentTest : public AttachmentFixture {
protected:
    QString textOf(const QList<SamplePage> &pages) const
    {
        return process(u"a.pdf"_s, samplePdf(pages)).extractedText;
    }
    /// The document with a password for reading, or with one for its owner only.
    QByteArray encrypted(const QByteArray &pdf, const QString &userPassword) const
    {
        const QString plain = home.write(u"plain.pdf"_s, pdf);
        const QString locked = home.path(u"locked.pdf"_s);
        EXPECT_EQ(QProcess::execute(u"qpdf"_s, {u"--encrypt"_s, userPassword, u"owner"_s, u"256"_s, u"--"_s,
                                                plain, locked}),
                  0);
        return home.read(u"locked.pdf"_s);
    }
};

TEST_F(DocumentTest, DocumentIsFilledAsTold)
{
    const QByteArray pdf = samplePdf({{Kind::text, u"First page."_s}});
    const ChatAttachment attachment = process(u"report.pdf"_s, pdf);
    EXPECT_EQ(attachment.filename, u"report.pdf"_s);
    EXPECT_EQ(attachment.kind, AttachmentKind::pdf);
    EXPECT_EQ(attachment.data, std::nullopt);
    EXPECT_EQ(attachment.extractedText, u"First page."_s);
    EXPECT_EQ(attachment.mimeType, u"application/pdf"_s);
    EXPECT_EQ(attachment.byteSize, pdf.size());
}

TEST_F(DocumentTest, PagesAreJoinedWithAnEmptyLine)
{
    EXPECT_EQ(textOf({{Kind::text, u"One"_s}, {Kind::blank, {}}, {Kind::text, u"Three"_s}}),
              u"One\n\nThree"_s);
}

TEST_F(DocumentTest, TextBeyondTheAlphabetComesOut)
{
    const auto text = u"Grüße aus Łódź: 42 €, αβγ, привет"_s;
    EXPECT_EQ(textOf({{Kind::text, text}}), text);
}

TEST_F(DocumentTest, HebrewComesInTheOrderInWhichItIsRead)
{
    const auto text = u"שלום עולם, זהו מסמך בעברית.\nבשנת 1948 נכתב (כאן) המסמך Linux."_s;
    EXPECT_EQ(textOf({{Kind::text, text}}), text);
}

TEST_F(DocumentTest, ArabicComesInTheOrderInWhichItIsRead)
{
    const auto text = u"مرحبا بالعالم\nهذا نص من عام 2024"_s;
    EXPECT_EQ(textOf({{Kind::text, text}}), text);
}

TEST_F(DocumentTest, HebrewWordInAnEnglishTextIsReadInItsOrder)
{
    const auto text = u"The word שלום means peace, and 42 is a number.\nNothing else."_s;
    EXPECT_EQ(textOf({{Kind::text, text}}), text);
}

TEST_F(DocumentTest, PagesThatTakeTooLongAreTold)
{
    const QByteArray pdf = samplePdf({{Kind::text, u"One"_s},
                                      {Kind::scanned, u"Two"_s},
                                      {Kind::text, u"Three"_s},
                                      {Kind::scanned, u"Four"_s},
                                      {Kind::scanned, u"Five"_s}});
    DocumentTimes times;
    times.recognition = std::chrono::milliseconds(0);
    EXPECT_EQ(documentText(pdf, times),
              u"One\n\nThree\n\n[Pages 2, 4–5 took too long and were not read in full.]"_s);
    times = {};
    times.recognitionOfPage = std::chrono::milliseconds(1);
    EXPECT_EQ(documentText(pdf, times),
              u"One\n\nThree\n\n[Pages 2, 4–5 took too long and were not read in full.]"_s);
}

TEST_F(DocumentTest, PageThatTakesTooLongIsTold)
{
    const QByteArray pdf = samplePdf({{Kind::text, u"One"_s}, {Kind::scanned, u"Two"_s}});
    DocumentTimes times;
    times.recognition = std::chrono::milliseconds(0);
    EXPECT_EQ(documentText(pdf, times), u"One\n\n[Page 2 took too long and was not read in full.]"_s);
}

TEST_F(DocumentTest, DocumentOfWhichTimeAllowsNothingHasNoText)
{
    DocumentTimes times;
    times.text = std::chrono::milliseconds(0);
    EXPECT_EQ(documentText(samplePdf({{Kind::text, u"One"_s}}), times), QString());
}

TEST_F(DocumentTest, OnlyTheFirstTwoHundredPagesAreRead)
{
    QList<SamplePage> pages;
    QStringList expected;
    for (int page = 1; page <= 250; ++page) {
        pages.append({Kind::text, u"p%1"_s.arg(page)});
        if (page <= 200)
            expected.append(pages.last().text);
    }
    EXPECT_EQ(textOf(pages), expected.join(u"\n\n"_s));
}

TEST_F(DocumentTest, ThousandPagesAreRead)
{
    QList<SamplePage> pages(1'000, {Kind::text, u"page"_s});
    EXPECT_EQ(textOf(pages).count(u"page"_s), 200);
}

TEST_F(DocumentTest, LongTextIsCutAndMarked)
{
    const QList<SamplePage> pages(30, {Kind::text, u"word "_s.repeated(300)});
    const QString text = textOf(pages);
    const auto mark = u"\n[…truncated…]"_s;
    ASSERT_TRUE(text.endsWith(mark));
    EXPECT_EQ(characterCount(text), 16'000 + characterCount(mark));
}

TEST_F(DocumentTest, ScannedPagesEachHaveTheirLine)
{
    EXPECT_EQ(textOf({{Kind::scanned, u"Dear Sir or Madam"_s}, {Kind::scanned, u"Yours sincerely"_s}}),
              u"[Scanned page 1]\nDear Sir or Madam\n\n[Scanned page 2]\nYours sincerely"_s);
}

TEST_F(DocumentTest, ScannedPagesFollowThePagesOfText)
{
    EXPECT_EQ(textOf({{Kind::scanned, u"Scanned cover"_s},
                      {Kind::text, u"Printed inside"_s},
                      {Kind::blank, {}},
                      {Kind::scanned, u"Scanned back"_s}}),
              u"Printed inside\n\n[Scanned page 1]\nScanned cover\n\n[Scanned page "
              "4]\nScanned back"_s);
}

TEST_F(DocumentTest, LinesOfAScannedPageAreJoinedByLineFeeds)
{
    EXPECT_EQ(textOf({{Kind::scanned, u"The first line\nThe second line"_s}}),
              u"[Scanned page 1]\nThe first line\nThe second line"_s);
}

TEST_F(DocumentTest, ManyScannedPagesKeepTheirOrderAndNumbers)
{
    const QStringList words{"apple", "bridge", "candle", "dolphin", "engine", "forest", "garden"};
    QList<SamplePage> pages;
    QStringList expected;
    for (const QString &word : words) {
        pages.append({Kind::scanned, u"The word is "_s + word});
        expected.append(u"[Scanned page %1]\nThe word is %2"_s.arg(pages.size()).arg(word));
        pages.append({Kind::blank, {}});
    }
    EXPECT_EQ(textOf(pages), expected.join(u"\n\n"_s));
}

TEST_F(DocumentTest, RecognisedTextIsCutAndMarked)
{
    const auto printed = u"word "_s.repeated(316);
    QList<SamplePage> pages(10, {Kind::text, printed});
    const QString beginning = textOf(pages);
    ASSERT_LT(characterCount(beginning), 15'850);
    const QString lines = u"The quick brown fox jumps over the lazy dog.\n"_s.repeated(3);
    pages.append({{Kind::scanned, lines}, {Kind::scanned, lines}});
    const QString recognized = u"\n\n[Scanned page %1]\n"_s + lines.trimmed();
    const QString whole = beginning + recognized.arg(11) + recognized.arg(12);
    EXPECT_EQ(textOf(pages), firstCharacters(whole, 16'000) + u"\n[…truncated…]"_s);
}

TEST_F(DocumentTest, DocumentWithoutTextIsRefused)
{
    EXPECT_EQ(failureOf(u"blank.pdf"_s, samplePdf({{Kind::blank, {}}, {Kind::blank, {}}})),
              u"\"blank.pdf\" contains no readable text — it may be empty or made entirely of "
              "images that could not be recognized."_s);
}

TEST_F(DocumentTest, DocumentWithAPasswordCannotBeOpened)
{
    const QByteArray pdf = samplePdf({{Kind::text, u"Secret"_s}});
    EXPECT_EQ(failureOf(u"a.pdf"_s, encrypted(pdf, u"password"_s)), u"Could not open \"a.pdf\" as a PDF."_s);
}

TEST_F(DocumentTest, DocumentWithAnOwnersPasswordOnlyIsRead)
{
    const QByteArray pdf = samplePdf({{Kind::text, u"Not so secret"_s}});
    EXPECT_EQ(process(u"a.pdf"_s, encrypted(pdf, {})).extractedText, u"Not so secret"_s);
}

TEST_F(DocumentTest, WhatIsNoDocumentCannotBeOpened)
{
    const auto message = u"Could not open \"a.pdf\" as a PDF."_s;
    EXPECT_EQ(failureOf(u"a.pdf"_s, {}), message);
    EXPECT_EQ(failureOf(u"a.pdf"_s, "just text"), message);
    EXPECT_EQ(failureOf(u"a.pdf"_s, "%PDF-1.7\n"), message);
}

TEST_F(DocumentTest, PageOfAbsurdSizeDoesNoHarm)
{
    QByteArray pdf = samplePdf({{Kind::scanned, u"Readable"_s}});
    const qsizetype box = pdf.indexOf("/MediaBox [");
    ASSERT_GT(box, 0);
    const qsizetype end = pdf.indexOf(']', box);
    pdf.replace(box, end - box, QByteArray("/MediaBox [0 0 99999999 99999999").leftJustified(end - box));
    EXPECT_EQ(failureOf(u"a.pdf"_s, pdf),
              u"\"a.pdf\" contains no readable text — it may be empty or made entirely of "
              "images that could not be recognized."_s);
}

} // namespace
} // namespace morvane
