#include "providers/AttachmentText.h"

namespace morvane {

QString attachedFileText(const ChatAttachment &attachment)
{
    const auto kind =
        attachment.kind == AttachmentKind::pdf ? QStringLiteral("document") : QStringLiteral("file");
    return QStringLiteral("[Attached ") + kind + QLatin1Char(' ') + attachment.filename +
           QStringLiteral("]\n") + attachment.extractedText + QStringLiteral("\n[End of ") +
           attachment.filename + QLatin1Char(']');
}

QString imagePlaceholder(const ChatAttachment &image)
{
    return QStringLiteral("[Image attached: ") + image.filename + QLatin1Char(']');
}

} // namespace morvane
