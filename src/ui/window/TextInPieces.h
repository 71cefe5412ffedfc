#pragma once

#include <QMimeData>
#include <QStringList>

namespace morvane {

/// Text for the clipboard or the selection that is put together when somebody asks for it, since each step of
/// a selection offers another.
class TextInPieces final : public QMimeData {
    Q_OBJECT
public:
    /// `bytes` are the same in UTF-8, where they are known already.
    explicit TextInPieces(const QStringList &pieces, const QByteArray &bytes = {})
        : m_pieces(pieces), m_bytes(bytes)
    {
    }

    const QStringList &pieces() const { return m_pieces; }
    QStringList formats() const override;

protected:
    QVariant retrieveData(const QString &format, QMetaType type) const override;

private:
    const QStringList m_pieces;
    const QByteArray m_bytes;
};

} // namespace morvane
