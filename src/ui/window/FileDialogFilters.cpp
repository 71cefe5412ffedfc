#include "ui/window/FileDialogFilters.h"

#include "attachments/AttachmentTypes.h"

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

QString filter(const QString &label, const QStringList &extensions)
{
    return label + u" (*."_s + extensions.join(u" *."_s) + u')';
}

} // namespace

QStringList fileDialogFilters()
{
    const QStringList images = extensionsOf(AttachmentKind::image);
    const QStringList documents = extensionsOf(AttachmentKind::pdf);
    const QStringList texts = extensionsOf(AttachmentKind::text);
    return {filter(u"Images, PDFs and text files"_s, images + documents + texts), filter(u"Images"_s, images),
            filter(u"PDFs"_s, documents), filter(u"Text and code files"_s, texts), u"All files (*)"_s};
}

} // namespace morvane
