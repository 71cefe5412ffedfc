#include "ui/window/PictureFormat.h"

#include <QMimeData>

using namespace Qt::StringLiterals;

namespace morvane {

QString pictureExtension(const QMimeData &data)
{
    // A cell of a spreadsheet or a paragraph also comes as a picture of itself; it is meant as text.
    if (data.hasFormat(u"text/plain"_s))
        return {};
    for (const char *extension : {"png", "jpeg", "webp", "gif", "tiff", "bmp"}) {
        const QString name = QString::fromLatin1(extension);
        if (data.formats().contains(u"image/"_s + name))
            return name;
    }
    return {};
}

} // namespace morvane
