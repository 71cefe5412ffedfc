#include "attachments/reader/ReadAttachment.h"

#include "attachments/AttachmentLimits.h"
#include "attachments/reader/DocumentText.h"
#include "attachments/reader/PictureDecoder.h"
#include "attachments/reader/PicturePreview.h"
#include "attachments/reader/TextRecognition.h"
#include "attachments/reader/VisionPicture.h"

namespace morvane {
namespace {

ReaderAnswer textAnswer(const QString &text)
{
    QByteArray utf8 = text.toUtf8();
    // A character can be of any length; a text of such characters does not fit into an answer.
    if (utf8.size() > attachmentLimits::answerBytes / 2)
        return {ReaderAnswer::Kind::unreadable, {}};
    return {ReaderAnswer::Kind::text, std::move(utf8)};
}

QString recognizedText(const QByteArray &file)
{
    PictureDecoder decoder(file);
    const QImage image = decoder.decode(decoder.size());
    return TextRecognition().lines(onWhite(image), 0, attachmentLimits::recognitionTimeOfPage).text;
}

} // namespace

ReaderAnswer readAttachment(QByteArrayView job, const QByteArray &file)
{
    if (job == "picture")
        return visionPicture(file);
    if (job == "icon")
        return picturePreview(file, attachmentLimits::iconSide, attachmentLimits::iconPixels);
    if (job == "thumbnail")
        return picturePreview(file, attachmentLimits::thumbnailSide);
    if (job == "preview")
        return picturePreview(file, attachmentLimits::previewSide);
    if (job == "document") {
        const auto text = documentText(file);
        return text ? textAnswer(*text) : ReaderAnswer();
    }
    if (job == "recognition")
        return textAnswer(recognizedText(file));
    return {};
}

} // namespace morvane
