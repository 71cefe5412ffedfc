#include "ui/window/TextInPieces.h"

using namespace Qt::StringLiterals;

namespace morvane {

QStringList TextInPieces::formats() const
{
    return {u"text/plain"_s};
}

QVariant TextInPieces::retrieveData(const QString &format, QMetaType type) const
{
    if (format != "text/plain"_L1)
        return {};
    if (type.id() == QMetaType::QByteArray && !m_bytes.isEmpty())
        return m_bytes;
    return m_pieces.size() == 1 ? m_pieces.constFirst() : m_pieces.join(QString()); // one alone is shared
}

} // namespace morvane
