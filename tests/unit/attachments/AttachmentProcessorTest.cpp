#include "attachments/AttachmentProcessor.h"

#include "attachments/AttachmentError.h"
#include "attachments/AttachmentTypes.h"
#include "base/Text.h"
#include "support/TemporaryHome.h"

#include <QFile>
#include <QMimeDatabase>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace morvane {
namespace {

class AttachmentProcessorTest : public testing::Test {
protected:
    ChatAttachment process(const QString &path) const
    {
        return processor.process(QUrl::fromLocalFile(path), stop);
    }
    ChatAttachment processFile(const QString &name, const QByteArray &content) const
    {
        return process(home.write(name, content));
    }
    QString failureOf(const QUrl &url) const
    {
        try {
            processor.process(url, stop);
        } catch (const AttachmentError &error) {
            return error.message();
        }
        return {};
    }
    QString failureOf(const QString &path) const { return failureOf(QUrl::fromLocalFile(path)); }
    /// A file of that many bytes that takes no room on the disk.
    QString fileOfSize(const QString &name, qint64 bytes) const
    {
        const QString path = home.write(name, {});
        EXPECT_TRUE(QFile::resize(path, bytes));
        return path;
    }

    TemporaryHome home;
    StopFlag stop;
    // Without a reader nothing is decoded.
    AttachmentProcessor processor{ReaderProcess(QStringLiteral("/nonexistent/reader"))};
};

TEST_F(AttachmentProcessorTest, TextFileIsFilledAsTold)
{
    const ChatAttachment attachment = processFile(QStringLiteral("notes.md"), "# Grüße\n");
    EXPECT_FALSE(attachment.id.isNull());
    EXPECT_EQ(attachment.filename, QStringLiteral("notes.md"));
    EXPECT_EQ(attachment.kind, AttachmentKind::text);
    EXPECT_EQ(attachment.data, std::nullopt);
    EXPECT_EQ(attachment.extractedText, QStringLiteral("# Grüße\n"));
    EXPECT_EQ(attachment.mimeType, std::nullopt);
    EXPECT_EQ(attachment.byteSize, 10);
}

TEST_F(AttachmentProcessorTest, EachAttachmentHasAnIdentityOfItsOwn)
{
    const QString path = home.write(QStringLiteral("a.txt"), "a");
    EXPECT_NE(process(path).id, process(path).id);
}

TEST_F(AttachmentProcessorTest, TextOfExactlySixteenThousandCharactersStaysWhole)
{
    const QByteArray text(16'000, 'a');
    EXPECT_EQ(processFile(QStringLiteral("a.txt"), text).extractedText, QString::fromLatin1(text));
}

TEST_F(AttachmentProcessorTest, TextWithOneCharacterMoreIsCutAndMarked)
{
    EXPECT_EQ(processFile(QStringLiteral("a.txt"), QByteArray(16'001, 'a')).extractedText,
              QString(16'000, QLatin1Char('a')) + QStringLiteral("\n[…truncated…]"));
}

TEST_F(AttachmentProcessorTest, CharactersAreCountedAsAPersonSeesThem)
{
    const QString family = QStringLiteral("👨‍👩‍👧");
    const QString whole = family.repeated(16'000);
    EXPECT_EQ(processFile(QStringLiteral("a.txt"), whole.toUtf8()).extractedText, whole);
    EXPECT_EQ(processFile(QStringLiteral("b.txt"), (whole + family).toUtf8()).extractedText,
              whole + QStringLiteral("\n[…truncated…]"));
}

TEST_F(AttachmentProcessorTest, FileWithoutExtensionIsTriedAsText)
{
    const ChatAttachment attachment = processFile(QStringLiteral("notes"), "remember the milk");
    EXPECT_EQ(attachment.kind, AttachmentKind::text);
    EXPECT_EQ(attachment.extractedText, QStringLiteral("remember the milk"));
}

TEST_F(AttachmentProcessorTest, ArchiveIsRefused)
{
    const QString path = home.write(QStringLiteral("archive.zip"), QByteArray("PK\x03\x04\xFF\xFE\x80\x81"));
    EXPECT_EQ(failureOf(path),
              QStringLiteral("\"archive.zip\" does not appear to be a text file. Supported types are images, "
                             "PDFs, and text or code files."));
}

TEST_F(AttachmentProcessorTest, EmptyTextFileGivesEmptyText)
{
    const ChatAttachment attachment = processFile(QStringLiteral("empty.txt"), {});
    EXPECT_EQ(attachment.extractedText, QString());
    EXPECT_EQ(attachment.byteSize, 0);
}

TEST_F(AttachmentProcessorTest, MissingFileIsNamed)
{
    const auto message = QStringLiteral("The file \"gone.txt\" could not be found.");
    EXPECT_EQ(failureOf(home.path(QStringLiteral("gone.txt"))), message);
    EXPECT_EQ(failureOf(QUrl(QStringLiteral("https://127.0.0.1/gone.txt"))), message);
}

TEST_F(AttachmentProcessorTest, FilesOfExactlyTheLimitAreTaken)
{
    const QString image = fileOfSize(QStringLiteral("a.png"), 10'000'000);
    EXPECT_EQ(process(image).byteSize, 10'000'000);
    const QString text = fileOfSize(QStringLiteral("a.txt"), 5'000'000);
    EXPECT_EQ(process(text).byteSize, 5'000'000);
    EXPECT_EQ(failureOf(fileOfSize(QStringLiteral("a.pdf"), 20'000'000)),
              QStringLiteral("Could not open \"a.pdf\" as a PDF."));
}

TEST_F(AttachmentProcessorTest, FilesAboveTheLimitAreRefused)
{
    EXPECT_EQ(failureOf(fileOfSize(QStringLiteral("a.png"), 10'000'001)),
              QStringLiteral("\"a.png\" is larger than 10 MB. Please attach a smaller image."));
    EXPECT_EQ(failureOf(fileOfSize(QStringLiteral("a.pdf"), 20'000'001)),
              QStringLiteral("\"a.pdf\" is larger than 20 MB. Please attach a smaller PDF."));
    EXPECT_EQ(failureOf(fileOfSize(QStringLiteral("a.txt"), 5'000'001)),
              QStringLiteral("\"a.txt\" is larger than 5 MB — too large to read in full."));
}

TEST_F(AttachmentProcessorTest, FolderIsNoTextFile)
{
    home.write(QStringLiteral("folder/file"), "x");
    const auto refusal = QStringLiteral("\"folder\" does not appear to be a text file. Supported types are "
                                        "images, PDFs, and text or code files.");
    EXPECT_EQ(failureOf(home.path(QStringLiteral("folder"))), refusal);
    EXPECT_EQ(failureOf(home.path(QStringLiteral("folder/"))), refusal);
}

TEST_F(AttachmentProcessorTest, PipeThatNobodyWritesToIsRefusedAtOnce)
{
    const QString path = home.path(QStringLiteral("pipe.txt"));
    ASSERT_EQ(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    EXPECT_TRUE(failureOf(path).contains(QStringLiteral("does not appear to be a text file")));
}

TEST_F(AttachmentProcessorTest, UnreadableImageIsNamed)
{
    EXPECT_EQ(failureOf(home.write(QStringLiteral("empty.png"), {})),
              QStringLiteral("Could not read \"empty.png\"."));
    home.write(QStringLiteral("folder.png/file"), "x");
    EXPECT_EQ(failureOf(home.path(QStringLiteral("folder.png"))),
              QStringLiteral("Could not read \"folder.png\"."));
}

TEST_F(AttachmentProcessorTest, WithoutTheReaderAPictureGoesAsItIs)
{
    const ChatAttachment attachment = processFile(QStringLiteral("photo.HEIC"), "bytes");
    EXPECT_EQ(attachment.kind, AttachmentKind::image);
    EXPECT_EQ(attachment.data, QByteArray("bytes"));
    EXPECT_EQ(attachment.mimeType, QStringLiteral("image/heic"));
    EXPECT_EQ(attachment.byteSize, 5);
    EXPECT_EQ(attachment.extractedText, QString());
}

TEST_F(AttachmentProcessorTest, WithoutTheReaderADocumentCannotBeOpened)
{
    EXPECT_EQ(failureOf(home.write(QStringLiteral("a.pdf"), "%PDF-1.4")),
              QStringLiteral("Could not open \"a.pdf\" as a PDF."));
}

TEST_F(AttachmentProcessorTest, ImageThatIsInNoFileHasTheSameLimits)
{
    const auto image = [this](const QByteArray &data) {
        return processor.processImage(data, QStringLiteral("Pasted image.png"), stop);
    };
    EXPECT_EQ(image("bytes").mimeType, QStringLiteral("image/png"));
    EXPECT_THROW(image({}), AttachmentError);
    EXPECT_THROW(image(QByteArray(10'000'001, 'x')), AttachmentError);
}

TEST_F(AttachmentProcessorTest, ContentTypeDecidesBeforeTheExtension)
{
    const auto kind = [](const char *type, const char *name) {
        const QMimeType mime = QMimeDatabase().mimeTypeForName(QString::fromLatin1(type));
        EXPECT_TRUE(mime.isValid()) << type;
        return AttachmentProcessor::detectKind(QUrl::fromLocalFile(QString::fromLatin1(name)), mime);
    };
    EXPECT_EQ(kind("image/png", "/a.pdf"), AttachmentKind::image);
    EXPECT_EQ(kind("application/pdf", "/a.png"), AttachmentKind::pdf);
    EXPECT_EQ(kind("text/plain", "/a.png"), AttachmentKind::text);
    EXPECT_EQ(kind("application/json", "/a.png"), AttachmentKind::text);
    EXPECT_EQ(kind("application/xml", "/a.png"), AttachmentKind::text);
    EXPECT_EQ(kind("text/x-csrc", "/a.png"), AttachmentKind::text);
    EXPECT_EQ(kind("video/mp4", "/a.png"), AttachmentKind::image);
}

TEST_F(AttachmentProcessorTest, ExtensionDecidesWithoutAContentType)
{
    const auto kind = [](const QString &name) {
        return AttachmentProcessor::detectKind(QUrl::fromLocalFile(QLatin1Char('/') + name), std::nullopt);
    };
    const QString images = QStringLiteral("png jpg jpeg heic heif gif webp bmp tiff");
    for (const QString &extension : images.split(QLatin1Char(' ')))
        EXPECT_EQ(kind(QStringLiteral("a.") + extension), AttachmentKind::image) << extension.toStdString();
    EXPECT_EQ(kind(QStringLiteral("a.PDF")), AttachmentKind::pdf);
    EXPECT_EQ(kind(QStringLiteral("A.JPEG")), AttachmentKind::image);
    EXPECT_EQ(kind(QStringLiteral("a.swift")), AttachmentKind::text);
    EXPECT_EQ(kind(QStringLiteral("a.unknown")), AttachmentKind::text);
    EXPECT_EQ(kind(QStringLiteral("png")), AttachmentKind::text);
    EXPECT_EQ(kind(QStringLiteral(".png")), AttachmentKind::text);
}

TEST_F(AttachmentProcessorTest, EveryNamedTextExtensionIsText)
{
    const QString named = QStringLiteral(
        "txt md markdown swift py js ts tsx jsx html css json csv tsv xml yaml yml sh zsh bash c h cpp hpp m "
        "mm java kt rb go rs sql log tex toml ini cfg conf plist env gitignore r php pl lua dart scala vue "
        "svelte");
    EXPECT_EQ(extensionsOf(AttachmentKind::text), named.split(QLatin1Char(' ')));
    for (const QString &extension : extensionsOf(AttachmentKind::text)) {
        const ChatAttachment attachment = processFile(QStringLiteral("a.") + extension, "text");
        EXPECT_EQ(attachment.kind, AttachmentKind::text) << extension.toStdString();
    }
}

TEST_F(AttachmentProcessorTest, MimeTypesAreThoseOfTheExtensions)
{
    const auto type = [](const char *extension) {
        return AttachmentProcessor::mimeType(QString::fromLatin1(extension));
    };
    EXPECT_EQ(type("png"), QStringLiteral("image/png"));
    EXPECT_EQ(type("jpg"), QStringLiteral("image/jpeg"));
    EXPECT_EQ(type("jpeg"), QStringLiteral("image/jpeg"));
    EXPECT_EQ(type("heic"), QStringLiteral("image/heic"));
    EXPECT_EQ(type("heif"), QStringLiteral("image/heif"));
    EXPECT_EQ(type("gif"), QStringLiteral("image/gif"));
    EXPECT_EQ(type("webp"), QStringLiteral("image/webp"));
    EXPECT_EQ(type("bmp"), QStringLiteral("image/bmp"));
    EXPECT_EQ(type("tiff"), QStringLiteral("image/tiff"));
    for (const char *other : {"", "pdf", "txt", "svg", "tif", "PNG"})
        EXPECT_EQ(type(other), std::nullopt) << other;
}

TEST_F(AttachmentProcessorTest, PictureOfAnUnknownTypeIsCalledPng)
{
    EXPECT_EQ(processFile(QStringLiteral("drawing.svg"), "<svg/>").mimeType, QStringLiteral("image/png"));
}

} // namespace
} // namespace morvane
