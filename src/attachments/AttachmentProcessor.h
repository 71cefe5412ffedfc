#pragma once

#include "attachments/PictureSize.h"
#include "attachments/ReaderProcess.h"
#include "model/ChatAttachment.h"

#include <QImage>
#include <QMimeType>
#include <QUrl>

namespace morvane {

/// Turns files into attachments: pictures fit for a model that sees, text for everything else. The result no
/// longer depends on the file. All functions but the static ones block, those for scanned documents for
/// minutes; raising `stop` ends them within milliseconds with any failure. Any thread, several at once.
class AttachmentProcessor {
public:
    struct VisionImage {
        QByteArray data;
        QString mimeType;
    };

    /// Pictures and PDFs are decoded by `reader`.
    explicit AttachmentProcessor(ReaderProcess reader);

    /// Throws AttachmentError with what the user is to be told.
    ChatAttachment process(const QUrl &url, const StopFlag &stop) const;

    /// Throws AttachmentError if the file cannot be read or is empty, has too many pixels to be decoded, or
    /// cannot be decoded and is larger than what models take.
    ChatAttachment processImage(const QUrl &url, const QString &filename, const StopFlag &stop) const;
    /// The same for a picture that is not in a file.
    ChatAttachment processImage(const QByteArray &data, const QString &filename, const StopFlag &stop) const;

    /// Throws AttachmentError if the file is no readable PDF or shows no text.
    ChatAttachment processPDF(const QUrl &url, const QString &filename, qint64 byteSize,
                              const StopFlag &stop) const;

    /// A picture of at most 1,568 pixels a side and 2,000,000 bytes: the given bytes where they are, or where
    /// they cannot be decoded, otherwise a JPEG on white. `fileExtension` is in lower case.
    VisionImage prepareForVision(const QByteArray &data, const QString &fileExtension,
                                 const StopFlag &stop) const;

    /// A picture to look at; null if it cannot be read.
    QImage picture(const QByteArray &data, PictureSize size, const StopFlag &stop) const;

    /// The lines of text that an encoded picture shows, joined by line feeds; empty if there are none.
    QString ocr(const QByteArray &image, const StopFlag &stop) const;

    /// The content type decides, then the extension; what neither knows is tried as text.
    static AttachmentKind detectKind(const QUrl &url, const std::optional<QMimeType> &contentType);
    /// The media type of a picture with this extension in lower case; nothing for others.
    static std::optional<QString> mimeType(const QString &extension);

private:
    ChatAttachment processText(const QUrl &url, const QString &filename) const;

    ReaderProcess m_reader;
};

} // namespace morvane
