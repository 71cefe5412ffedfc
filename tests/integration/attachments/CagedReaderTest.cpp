#include "AttachmentFixture.h"

#include "support/SamplePdf.h"
#include "support/SamplePictures.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <thread>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// The real reader program: that it is in its cage before it looks at a file, and what it says without one.
class CagedReaderTest : public AttachmentFixture {
protected:
    /// The reader on a kernel that does not know these system calls.
    AttachmentProcessor withoutCalls(const QByteArray &calls)
    {
        const QByteArray tool =
            QFile::encodeName(QCoreApplication::applicationDirPath() + u"/without-calls"_s);
        const QString path = home.write(u"reader"_s, "#!/bin/sh\nexec " + tool + ' ' + calls + ' ' +
                                                         QFile::encodeName(readerProgram()) + " \"$@\"\n");
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return AttachmentProcessor(ReaderProcess(path));
    }
    QUrl file(const QString &name, const QByteArray &content) const
    {
        return QUrl::fromLocalFile(home.write(name, content));
    }
    QString failure(const AttachmentProcessor &reader, const QUrl &url) const
    {
        try {
            reader.process(url, stop);
        } catch (const AttachmentError &error) {
            return error.message();
        }
        return {};
    }
    static QByteArray statusOf(const QProcess &process, const QByteArray &field)
    {
        QFile status(u"/proc/%1/status"_s.arg(process.processId()));
        if (!status.open(QIODevice::ReadOnly))
            return {};
        for (const QByteArray &line : status.readAll().split('\n'))
            if (line.startsWith(field + ':'))
                return line.mid(field.size() + 1).trimmed();
        return {};
    }

    QByteArray pdf =
        samplePdf({{SamplePage::Kind::text, u"Printed"_s}, {SamplePage::Kind::scanned, u"Scanned word"_s}});
    QString pdfText = u"Printed\n\n[Scanned page 2]\nScanned word"_s;
};

const auto unprotected =
    u" was not read: Morvane could not make sure that reading it leaves your files alone."_s;

TEST_F(CagedReaderTest, CageIsClosedBeforeTheFileIsLookedAt)
{
    QProcess reader;
    reader.start(readerProgram(), {u"document"_s});
    ASSERT_TRUE(reader.waitForStarted());
    while (reader.state() == QProcess::Running && statusOf(reader, "Seccomp") != "2") {
        reader.waitForReadyRead(1);
        std::this_thread::yield();
    }
    EXPECT_EQ(statusOf(reader, "Seccomp"), "2");
    EXPECT_EQ(statusOf(reader, "NoNewPrivs"), "1");
    EXPECT_EQ(statusOf(reader, "Threads"), "1");
    reader.write(pdf);
    reader.closeWriteChannel();
    ASSERT_TRUE(reader.waitForFinished());
    EXPECT_TRUE(reader.readAllStandardOutput().endsWith(pdfText.toUtf8()));
}

TEST_F(CagedReaderTest, EverythingIsReadOnAKernelWithoutLandlock)
{
    const AttachmentProcessor reader = withoutCalls("landlock_create_ruleset,landlock_restrict_self");
    EXPECT_EQ(reader.process(file(u"a.pdf"_s, pdf), stop).extractedText, pdfText);
    const QByteArray heic = encodedHeic(samplePhoto({2'000, 100}));
    EXPECT_EQ(reader.process(file(u"a.heic"_s, heic), stop).mimeType, u"image/jpeg"_s);
}

TEST_F(CagedReaderTest, NothingIsReadOnAKernelWithoutTheFilter)
{
    const AttachmentProcessor reader = withoutCalls("seccomp");
    EXPECT_EQ(failure(reader, file(u"a.pdf"_s, pdf)), u"\"a.pdf\""_s + unprotected);
    const QByteArray large = encoded(samplePhoto({1'200, 1'100}), "bmp");
    EXPECT_EQ(failure(reader, file(u"a.bmp"_s, large)), u"\"a.bmp\""_s + unprotected);
    const QByteArray wide = encoded(samplePhoto({2'000, 10}), "png");
    EXPECT_EQ(reader.process(file(u"a.png"_s, wide), stop).data, wide);
}

TEST_F(CagedReaderTest, NothingIsReadWhenTheKernelRefusesLandlockHalfWay)
{
    const AttachmentProcessor reader = withoutCalls("landlock_restrict_self");
    EXPECT_EQ(failure(reader, file(u"a.pdf"_s, pdf)), u"\"a.pdf\""_s + unprotected);
}

TEST_F(CagedReaderTest, ReaderLearnsNothingOfTheUsersEnvironment)
{
    qputenv("MORVANE_TEST_API_KEY", "sk-secret");
    const QString path =
        home.write(u"reader"_s, "#!/bin/sh\nexport >" + QFile::encodeName(home.path(u"seen"_s)));
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    AttachmentProcessor(ReaderProcess(path)).ocr("bytes", stop);
    qunsetenv("MORVANE_TEST_API_KEY");
    const QByteArray seen = home.read(u"seen"_s);
    EXPECT_TRUE(seen.contains("OMP_THREAD_LIMIT"));
    EXPECT_FALSE(seen.contains("sk-secret"));
    EXPECT_FALSE(seen.contains("HOME"));
}

/// A document of one page. Objects from 5 on are free.
QByteArray documentOf(const QByteArray &content, const QByteArray &resources, const QByteArray &objects)
{
    return "%PDF-1.4\n1 0 obj<</Type/Catalog/Pages 2 0 R>>endobj\n"
           "2 0 obj<</Type/Pages/Kids[3 0 R]/Count 1>>endobj\n"
           "3 0 obj<</Type/Page/Parent 2 0 R/MediaBox[0 0 612 792]/Contents 4 0 R/Resources<<" +
           resources + ">>>>endobj\n4 0 obj<</Length " + QByteArray::number(content.size()) + ">>stream\n" +
           content + "\nendstream endobj\n" + objects + "trailer<</Root 1 0 R>>\n";
}

/// A document in which a pattern draws a line in each of the fonts, which only shows in a picture of the
/// page.
QByteArray patternOfWords(const QByteArrayList &fonts)
{
    QByteArray words = "BT 72 700 Td ";
    QByteArray resources;
    for (qsizetype number = 0; number < fonts.size(); ++number) {
        const QByteArray name = "/F" + QByteArray::number(number);
        words += name + " 24 Tf (Hello from the pattern) Tj 0 -40 Td ";
        resources += name + "<</Type/Font/Subtype/TrueType/BaseFont/" + fonts[number] + ">>";
    }
    words += "ET";
    return documentOf(
        "/Pattern cs /P1 scn 0 0 612 792 re f", "/Pattern<</P1 5 0 R>>",
        "5 0 obj<</Type/Pattern/PatternType 1/PaintType 1/TilingType 1/BBox[0 0 612 792]/XStep 612"
        "/YStep 792/Resources<</Font<<" +
            resources + ">>>>/Length " + QByteArray::number(words.size()) + ">>stream\n" + words +
            "\nendstream endobj\n");
}

TEST_F(CagedReaderTest, EncodingsOfTheSystemAreThere)
{
    // Chinese text in an encoding that the document names and does not bring.
    const QByteArray font =
        "5 0 obj<</Type/Font/Subtype/Type0/BaseFont/STSong-Light/Encoding/GBK-EUC-H/DescendantFonts[6 0 R]>>"
        "endobj\n6 0 "
        "obj<</Type/Font/Subtype/CIDFontType0/BaseFont/STSong-Light/CIDSystemInfo<</Registry(Adobe)"
        "/Ordering(GB1)/Supplement 2>>/DW 1000>>endobj\n";
    EXPECT_EQ(process(u"a.pdf"_s, documentOf("BT /F1 24 Tf 72 700 Td <C4E3BAC3CAC0BDE7> Tj ET",
                                             "/Font<</F1 5 0 R>>", font))
                  .extractedText,
              u"你好世界"_s);
}

TEST_F(CagedReaderTest, PagesAreRenderedWithTheSystemsSubstitutesForFonts)
{
    const QByteArrayList fonts{"Helvetica", "Times-Bold", "Courier-Oblique", "Calibri", "NobodyHasThis-Bold"};
    EXPECT_EQ(process(u"a.pdf"_s, patternOfWords(fonts)).extractedText,
              u"[Scanned page 1]"_s + u"\nHello from the pattern"_s.repeated(fonts.size()));
}

} // namespace
} // namespace morvane
