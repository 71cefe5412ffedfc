#include "ui/controls/ReadableText.h"

namespace morvane {
namespace {

bool reordersText(QChar unit)
{
    return (unit >= QChar(0x202A) && unit <= QChar(0x202E)) ||
           (unit >= QChar(0x2066) && unit <= QChar(0x2069));
}

} // namespace

QString readableText(QString text)
{
    for (QChar &unit : text)
        if (reordersText(unit) || (unit.category() == QChar::Other_Control && unit != u'\n' && unit != u'\t'))
            unit = QChar::ReplacementCharacter;
    return text;
}

} // namespace morvane
