#include "providers/AttachmentText.h"

using namespace Qt::StringLiterals;

namespace morvane {

QString attachedFileText(const ChatAttachment &attachment)
{
    const auto kind = attachment.kind == AttachmentKind::pdf ? u"document"_s : u"file"_s;
    return u"[Attached "_s + kind + u' ' + attachment.filename + u"]\n"_s + attachment.extractedText +
           u"\n[End of "_s + attachment.filename + u']';
}

QString imagePlaceholder(const ChatAttachment &image)
{
    return u"[Image attached: "_s + image.filename + u']';
}

} // namespace morvane
