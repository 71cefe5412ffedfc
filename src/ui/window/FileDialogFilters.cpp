#include "ui/window/FileDialogFilters.h"

#include "attachments/AttachmentTypes.h"

namespace morvane {

namespace {

QString filter(const QString &label, const QStringList &extensions)
{
    return label + QStringLiteral(" (*.") + extensions.join(QStringLiteral(" *.")) + QLatin1Char(')');
}

} // namespace

QStringList fileDialogFilters()
{
    const QStringList images = extensionsOf(AttachmentKind::image);
    const QStringList documents = extensionsOf(AttachmentKind::pdf);
    const QStringList texts = extensionsOf(AttachmentKind::text);
    return {filter(QStringLiteral("Images, PDFs and text files"), images + documents + texts),
            filter(QStringLiteral("Images"), images), filter(QStringLiteral("PDFs"), documents),
            filter(QStringLiteral("Text and code files"), texts), QStringLiteral("All files (*)")};
}

} // namespace morvane
