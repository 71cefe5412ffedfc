#pragma once

#include "async/Task.h"
#include "attachments/PictureSize.h"
#include "model/ChatAttachment.h"

#include <QUrl>

namespace morvane {

/// Makes attachments without holding the main thread. Tasks throw AttachmentError with what the user is to be
/// told; cancelling one ends its work. Main thread.
class AttachmentService {
public:
    virtual ~AttachmentService() = default;

    /// From a file.
    virtual Task<ChatAttachment> process(QUrl url) = 0;
    /// From the bytes of a picture that is not in a file; the name's extension tells its type.
    virtual Task<ChatAttachment> processImage(QByteArray data, QString filename) = 0;
    /// An encoded picture to look at, whoever made it; null if it cannot be read.
    virtual Task<QImage> picture(QByteArray data, PictureSize size) = 0;
};

} // namespace morvane
