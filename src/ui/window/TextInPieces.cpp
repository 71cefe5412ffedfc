#include "ui/window/TextInPieces.h"

using namespace Qt::StringLiterals;

namespace morvane {

QStringList TextInPieces::formats() const
{
    return {u"text/plain"_s};
}

QVariant TextInPieces::retrieveData(const QString &format, QMetaType) const
{
    return format == "text/plain"_L1 ? QVariant(m_pieces.join(QString())) : QVariant();
}

} // namespace morvane
