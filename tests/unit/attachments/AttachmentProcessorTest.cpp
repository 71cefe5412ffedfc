#include "attachments/AttachmentProcessor.h"

#include "attachments/AttachmentError.h"
#include "attachments/AttachmentTypes.h"
#include "base/Text.h"
#include "support/TemporaryHome.h"

#include <QFile>
#include <QMimeDatabase>
#include <gtest/gtest.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

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
    AttachmentProcessor processor{ReaderProcess(u"/nonexistent/reader"_s)};
};

TEST_F(AttachmentProcessorTest, TextFileIsFilledAsTold)
{
    const ChatAttachment attachment = processFile(u"notes.md"_s, "# Grüße\n");
    EXPECT_FALSE(attachment.id.isNull());
    EXPECT_EQ(attachment.filename, u"notes.md"_s);
    EXPECT_EQ(attachment.kind, AttachmentKind::text);
    EXPECT_EQ(attachment.data, std::nullopt);
    EXPECT_EQ(attachment.extractedText, u"# Grüße\n"_s);
    EXPECT_EQ(attachment.mimeType, std::nullopt);
    EXPECT_EQ(attachment.byteSize, 10);
}

TEST_F(AttachmentProcessorTest, EachAttachmentHasAnIdentityOfItsOwn)
{
    const QString path = home.write(u"a.txt"_s, "a");
    EXPECT_NE(process(path).id, process(path).id);
}

TEST_F(AttachmentProcessorTest, TextOfExactlySixteenThousandCharactersStaysWhole)
{
    const QByteArray text(16'000, 'a');
    EXPECT_EQ(processFile(u"a.txt"_s, text).extractedText, QString::fromLatin1(text));
}

TEST_F(AttachmentProcessorTest, TextWithOneCharacterMoreIsCutAndMarked)
{
    EXPECT_EQ(processFile(u"a.txt"_s, QByteArray(16'001, 'a')).extractedText,
              QString(16'000, u'a') + u"\n[…truncated…]"_s);
}

TEST_F(AttachmentProcessorTest, CharactersAreCountedAsAPersonSeesThem)
{
    const QString family = u"👨‍👩‍👧"_s;
    const QString whole = family.repeated(16'000);
    EXPECT_EQ(processFile(u"a.txt"_s, whole.toUtf8()).extractedText, whole);
    EXPECT_EQ(processFile(u"b.txt"_s, (whole + family).toUtf8()).extractedText, whole + u"\n[…truncated…]"_s);
}

TEST_F(AttachmentProcessorTest, FileWithoutExtensionIsTriedAsText)
{
    const ChatAttachment attachment = processFile(u"notes"_s, "remember the milk");
    EXPECT_EQ(attachment.kind, AttachmentKind::text);
    EXPECT_EQ(attachment.extractedText, u"remember the milk"_s);
}

TEST_F(AttachmentProcessorTest, ArchiveIsRefused)
{
    const QString path = home.write(u"archive.zip"_s, QByteArray("PK\x03\x04\xFF\xFE\x80\x81"));
    EXPECT_EQ(failureOf(path),
              u"\"archive.zip\" does not appear to be a text file. Supported types are images, "
              "PDFs, and text or code files."_s);
}

TEST_F(AttachmentProcessorTest, EmptyTextFileGivesEmptyText)
{
    const ChatAttachment attachment = processFile(u"empty.txt"_s, {});
    EXPECT_EQ(attachment.extractedText, QString());
    EXPECT_EQ(attachment.byteSize, 0);
}

TEST_F(AttachmentProcessorTest, MissingFileIsNamed)
{
    const auto message = u"The file \"gone.txt\" could not be found."_s;
    EXPECT_EQ(failureOf(home.path(u"gone.txt"_s)), message);
    EXPECT_EQ(failureOf(QUrl(u"https://127.0.0.1/gone.txt"_s)), message);
}

TEST_F(AttachmentProcessorTest, FilesOfExactlyTheLimitAreTaken)
{
    // It keeps to the limit of its size; there is no reader here that could make it smaller for a model.
    EXPECT_EQ(failureOf(fileOfSize(u"a.png"_s, 10'000'000)), u"Could not read \"a.png\"."_s);
    const QString text = fileOfSize(u"a.txt"_s, 5'000'000);
    EXPECT_EQ(process(text).byteSize, 5'000'000);
    EXPECT_EQ(failureOf(fileOfSize(u"a.pdf"_s, 20'000'000)), u"Could not open \"a.pdf\" as a PDF."_s);
}

TEST_F(AttachmentProcessorTest, FilesAboveTheLimitAreRefused)
{
    EXPECT_EQ(failureOf(fileOfSize(u"a.png"_s, 10'000'001)),
              u"\"a.png\" is larger than 10 MB. Please attach a smaller image."_s);
    EXPECT_EQ(failureOf(fileOfSize(u"a.pdf"_s, 20'000'001)),
              u"\"a.pdf\" is larger than 20 MB. Please attach a smaller PDF."_s);
    EXPECT_EQ(failureOf(fileOfSize(u"a.txt"_s, 5'000'001)),
              u"\"a.txt\" is larger than 5 MB — too large to read in full."_s);
}

TEST_F(AttachmentProcessorTest, FolderIsNoTextFile)
{
    home.write(u"folder/file"_s, "x");
    const auto refusal = u"\"folder\" does not appear to be a text file. Supported types are "
                         "images, PDFs, and text or code files."_s;
    EXPECT_EQ(failureOf(home.path(u"folder"_s)), refusal);
    EXPECT_EQ(failureOf(home.path(u"folder/"_s)), refusal);
}

TEST_F(AttachmentProcessorTest, PipeThatNobodyWritesToIsRefusedAtOnce)
{
    const QString path = home.path(u"pipe.txt"_s);
    ASSERT_EQ(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    EXPECT_TRUE(failureOf(path).contains(u"does not appear to be a text file"_s));
}

TEST_F(AttachmentProcessorTest, UnreadableImageIsNamed)
{
    EXPECT_EQ(failureOf(home.write(u"empty.png"_s, {})), u"Could not read \"empty.png\"."_s);
    home.write(u"folder.png/file"_s, "x");
    EXPECT_EQ(failureOf(home.path(u"folder.png"_s)), u"Could not read \"folder.png\"."_s);
}

TEST_F(AttachmentProcessorTest, WithoutTheReaderAPictureGoesAsItIs)
{
    const ChatAttachment attachment = processFile(u"photo.HEIC"_s, "bytes");
    EXPECT_EQ(attachment.kind, AttachmentKind::image);
    EXPECT_EQ(attachment.data, QByteArray("bytes"));
    EXPECT_EQ(attachment.mimeType, u"image/heic"_s);
    EXPECT_EQ(attachment.byteSize, 5);
    EXPECT_EQ(attachment.extractedText, QString());
}

TEST_F(AttachmentProcessorTest, WithoutTheReaderAPictureGoesUpToWhatModelsTake)
{
    EXPECT_EQ(process(fileOfSize(u"a.jpg"_s, 2'000'000)).byteSize, 2'000'000);
    EXPECT_EQ(failureOf(fileOfSize(u"b.jpg"_s, 2'000'001)), u"Could not read \"b.jpg\"."_s);
}

TEST_F(AttachmentProcessorTest, WithoutTheReaderADocumentCannotBeOpened)
{
    EXPECT_EQ(failureOf(home.write(u"a.pdf"_s, "%PDF-1.4")), u"Could not open \"a.pdf\" as a PDF."_s);
}

TEST_F(AttachmentProcessorTest, ImageThatIsInNoFileHasTheSameLimits)
{
    const auto image = [this](const QByteArray &data) {
        return processor.processImage(data, u"Pasted image.png"_s, stop);
    };
    EXPECT_EQ(image("bytes").mimeType, u"image/png"_s);
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
        return AttachmentProcessor::detectKind(QUrl::fromLocalFile(u'/' + name), std::nullopt);
    };
    const QString images = u"png jpg jpeg heic heif gif webp bmp tiff"_s;
    for (const QString &extension : images.split(u' '))
        EXPECT_EQ(kind(u"a."_s + extension), AttachmentKind::image) << extension.toStdString();
    EXPECT_EQ(kind(u"a.PDF"_s), AttachmentKind::pdf);
    EXPECT_EQ(kind(u"A.JPEG"_s), AttachmentKind::image);
    EXPECT_EQ(kind(u"a.swift"_s), AttachmentKind::text);
    EXPECT_EQ(kind(u"a.unknown"_s), AttachmentKind::text);
    EXPECT_EQ(kind(u"png"_s), AttachmentKind::text);
    EXPECT_EQ(kind(u".png"_s), AttachmentKind::text);
}

TEST_F(AttachmentProcessorTest, EveryNamedTextExtensionIsText)
{
    const QString named =
        u"txt md markdown swift py js ts tsx jsx html css json csv tsv xml yaml yml sh zsh bash c h cpp hpp "
        u"m "
        "mm java kt rb go rs sql log tex toml ini cfg conf plist env gitignore r php pl lua dart scala vue "
        "svelte"_s;
    EXPECT_EQ(extensionsOf(AttachmentKind::text), named.split(u' '));
    for (const QString &extension : extensionsOf(AttachmentKind::text)) {
        const ChatAttachment attachment = processFile(u"a."_s + extension, "text");
        EXPECT_EQ(attachment.kind, AttachmentKind::text) << extension.toStdString();
    }
}

TEST_F(AttachmentProcessorTest, MimeTypesAreThoseOfTheExtensions)
{
    const auto type = [](const char *extension) {
        return AttachmentProcessor::mimeType(QString::fromLatin1(extension));
    };
    EXPECT_EQ(type("png"), u"image/png"_s);
    EXPECT_EQ(type("jpg"), u"image/jpeg"_s);
    EXPECT_EQ(type("jpeg"), u"image/jpeg"_s);
    EXPECT_EQ(type("heic"), u"image/heic"_s);
    EXPECT_EQ(type("heif"), u"image/heif"_s);
    EXPECT_EQ(type("gif"), u"image/gif"_s);
    EXPECT_EQ(type("webp"), u"image/webp"_s);
    EXPECT_EQ(type("bmp"), u"image/bmp"_s);
    EXPECT_EQ(type("tiff"), u"image/tiff"_s);
    for (const char *other : {"", "pdf", "txt", "svg", "tif", "PNG"})
        EXPECT_EQ(type(other), std::nullopt) << other;
}

TEST_F(AttachmentProcessorTest, PictureOfAnUnknownTypeIsCalledPng)
{
    EXPECT_EQ(processFile(u"drawing.svg"_s, "<svg/>").mimeType, u"image/png"_s);
}

} // namespace
} // namespace morvane
