#include "attachments/AttachmentProcessor.h"

#include "attachments/AttachmentError.h"
#include "attachments/AttachmentTypes.h"
#include "attachments/PicturePixels.h"
#include "base/RegularFile.h"
#include "base/Text.h"
#include "base/Uuid.h"

#include <QFile>
#include <QFileInfo>
#include <QMimeDatabase>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

namespace limits = attachmentLimits;

ReaderProcess::Job jobOf(PictureSize size)
{
    switch (size) {
    case PictureSize::icon:
        return ReaderProcess::Job::icon;
    case PictureSize::thumbnail:
        return ReaderProcess::Job::thumbnail;
    case PictureSize::preview:
        break;
    }
    return ReaderProcess::Job::preview;
}

[[noreturn]] void fail(const QString &message)
{
    throw AttachmentError(message);
}

QString quoted(const QString &filename)
{
    return u'"' + filename + u'"';
}

[[noreturn]] void failAsTooLarge(AttachmentKind kind, const QString &filename)
{
    switch (kind) {
    case AttachmentKind::image:
        fail(quoted(filename) + u" is larger than 10 MB. Please attach a smaller image."_s);
    case AttachmentKind::pdf:
        fail(quoted(filename) + u" is larger than 20 MB. Please attach a smaller PDF."_s);
    case AttachmentKind::text:
        fail(quoted(filename) + u" is larger than 5 MB — too large to read in full."_s);
    }
    Q_UNREACHABLE();
}

qint64 byteLimit(AttachmentKind kind)
{
    switch (kind) {
    case AttachmentKind::image:
        return limits::imageBytes;
    case AttachmentKind::pdf:
        return limits::pdfBytes;
    case AttachmentKind::text:
        return limits::textBytes;
    }
    Q_UNREACHABLE();
}

/// The whole file, which may have grown since its size was asked; nothing if it cannot be read.
std::optional<QByteArray> readFile(const QUrl &url, AttachmentKind kind, const QString &filename)
{
    auto file = RegularFile::open(QFile::encodeName(url.toLocalFile()).constData());
    auto bytes = file ? file->readUpTo(byteLimit(kind)) : std::unexpected(file.error());
    if (!bytes)
        return std::nullopt;
    if (bytes->size() > byteLimit(kind))
        failAsTooLarge(kind, filename);
    return std::move(*bytes);
}

QString cutText(const QString &text)
{
    const qsizetype end = characterOffset(text, limits::textCharacters);
    return end < text.size() ? text.left(end) + u"\n[…truncated…]"_s : text;
}

ChatAttachment newAttachment(AttachmentKind kind, const QString &filename, qint64 byteSize)
{
    ChatAttachment attachment;
    attachment.id = newUuid();
    attachment.filename = filename;
    attachment.kind = kind;
    attachment.byteSize = byteSize;
    return attachment;
}

[[noreturn]] void failAsUnprotected(const QString &filename)
{
    fail(quoted(filename) +
         u" was not read: Morvane could not make sure that reading it leaves your files alone."_s);
}

/// A picture goes as it is where it cannot be decoded, but not when it is larger than what models take.
void failIfUnfit(const std::optional<ReaderAnswer> &answer, const QByteArray &data, const QString &filename)
{
    const auto kind = answer ? answer->kind : ReaderAnswer::Kind::unreadable;
    if (kind == ReaderAnswer::Kind::tooManyPixels) {
        fail(quoted(filename) + u" has more than %1 million pixels. Please attach a smaller image."_s.arg(
                                    limits::imagePixels / 1'000'000));
    }
    if (data.size() <= limits::visionBytes)
        return;
    if (kind == ReaderAnswer::Kind::unprotected)
        failAsUnprotected(filename);
    if (kind == ReaderAnswer::Kind::unreadable)
        fail(u"Could not read "_s + quoted(filename) + u'.');
}

AttachmentProcessor::VisionImage visionImage(const std::optional<ReaderAnswer> &answer,
                                             const QByteArray &data, const QString &fileExtension)
{
    if (answer && answer->kind == ReaderAnswer::Kind::jpeg)
        return {answer->payload, u"image/jpeg"_s};
    return {data, AttachmentProcessor::mimeType(fileExtension).value_or(u"image/png"_s)};
}

QString extensionOf(const QString &filename)
{
    // A name that only begins with a dot has no extension.
    const qsizetype dot = filename.lastIndexOf(u'.');
    return dot > 0 ? filename.mid(dot + 1).toLower() : QString();
}

} // namespace

AttachmentProcessor::AttachmentProcessor(ReaderProcess reader) : m_reader(std::move(reader)) {}

ChatAttachment AttachmentProcessor::process(const QUrl &url, const StopFlag &stop) const
{
    const QString filename = url.adjusted(QUrl::StripTrailingSlash).fileName();
    const QFileInfo file(url.toLocalFile());
    if (!url.isLocalFile() || !file.exists())
        fail(u"The file "_s + quoted(filename) + u" could not be found."_s);
    // By its name only: the content of what bears the name of a picture is the decoder's affair.
    const QMimeType type = QMimeDatabase().mimeTypeForFile(filename, QMimeDatabase::MatchExtension);
    const AttachmentKind kind = detectKind(url, type.isDefault() ? std::nullopt : std::optional(type));
    if (file.size() > byteLimit(kind))
        failAsTooLarge(kind, filename);
    switch (kind) {
    case AttachmentKind::image:
        return processImage(url, filename, stop);
    case AttachmentKind::pdf:
        return processPDF(url, filename, file.size(), stop);
    case AttachmentKind::text:
        return processText(url, filename);
    }
    Q_UNREACHABLE();
}

ChatAttachment AttachmentProcessor::processText(const QUrl &url, const QString &filename) const
{
    const auto bytes = readFile(url, AttachmentKind::text, filename);
    if (!bytes || !bytes->isValidUtf8()) {
        fail(quoted(filename) + u" does not appear to be a text file. Supported types are images, PDFs, and "
                                "text or code files."_s);
    }
    ChatAttachment attachment = newAttachment(AttachmentKind::text, filename, bytes->size());
    attachment.extractedText = cutText(QString::fromUtf8(*bytes));
    return attachment;
}

ChatAttachment AttachmentProcessor::processImage(const QUrl &url, const QString &filename,
                                                 const StopFlag &stop) const
{
    const auto bytes = readFile(url, AttachmentKind::image, filename);
    return processImage(bytes.value_or(QByteArray()), filename, stop);
}

ChatAttachment AttachmentProcessor::processImage(const QByteArray &data, const QString &filename,
                                                 const StopFlag &stop) const
{
    if (data.isEmpty())
        fail(u"Could not read "_s + quoted(filename) + u'.');
    if (data.size() > limits::imageBytes)
        failAsTooLarge(AttachmentKind::image, filename);
    const auto answer = m_reader.read(ReaderProcess::Job::picture, data, stop);
    failIfUnfit(answer, data, filename);
    VisionImage image = visionImage(answer, data, extensionOf(filename));
    ChatAttachment attachment = newAttachment(AttachmentKind::image, filename, image.data.size());
    attachment.data = std::move(image.data);
    attachment.mimeType = std::move(image.mimeType);
    return attachment;
}

ChatAttachment AttachmentProcessor::processPDF(const QUrl &url, const QString &filename, qint64 byteSize,
                                               const StopFlag &stop) const
{
    const auto bytes = readFile(url, AttachmentKind::pdf, filename);
    const auto answer =
        bytes ? m_reader.read(ReaderProcess::Job::document, *bytes, stop) : std::optional<ReaderAnswer>();
    if (answer && answer->kind == ReaderAnswer::Kind::unprotected)
        failAsUnprotected(filename);
    if (!answer || answer->kind != ReaderAnswer::Kind::text)
        fail(u"Could not open "_s + quoted(filename) + u" as a PDF."_s);
    const QString text = QString::fromUtf8(answer->payload);
    if (text.isEmpty()) {
        fail(quoted(filename) + u" contains no readable text — it may be empty or made entirely of images "
                                "that could not be recognized."_s);
    }
    ChatAttachment attachment = newAttachment(AttachmentKind::pdf, filename, byteSize);
    attachment.mimeType = u"application/pdf"_s;
    attachment.extractedText = cutText(text);
    return attachment;
}

AttachmentProcessor::VisionImage AttachmentProcessor::prepareForVision(const QByteArray &data,
                                                                       const QString &fileExtension,
                                                                       const StopFlag &stop) const
{
    return visionImage(m_reader.read(ReaderProcess::Job::picture, data, stop), data, fileExtension);
}

QImage AttachmentProcessor::picture(const QByteArray &data, PictureSize size, const StopFlag &stop) const
{
    const auto answer = m_reader.read(jobOf(size), data, stop);
    return answer && answer->kind == ReaderAnswer::Kind::pixels ? pixelImage(answer->payload) : QImage();
}

QString AttachmentProcessor::ocr(const QByteArray &image, const StopFlag &stop) const
{
    const auto answer = m_reader.read(ReaderProcess::Job::recognition, image, stop);
    return answer && answer->kind == ReaderAnswer::Kind::text ? QString::fromUtf8(answer->payload)
                                                              : QString();
}

AttachmentKind AttachmentProcessor::detectKind(const QUrl &url, const std::optional<QMimeType> &contentType)
{
    if (const auto kind = contentType ? kindOfContentType(*contentType) : std::nullopt)
        return *kind;
    return kindOfExtension(extensionOf(url.fileName())).value_or(AttachmentKind::text);
}

std::optional<QString> AttachmentProcessor::mimeType(const QString &extension)
{
    if (extension == "jpg"_L1)
        return u"image/jpeg"_s;
    if (kindOfExtension(extension) == AttachmentKind::image)
        return u"image/"_s + extension;
    return std::nullopt;
}

} // namespace morvane
