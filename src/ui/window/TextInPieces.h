#pragma once

#include <QMimeData>
#include <QStringList>

namespace morvane {

/// Text for the clipboard or the selection that is put together when somebody asks for it, since each step of
/// a selection offers another.
class TextInPieces final : public QMimeData {
    Q_OBJECT
public:
    explicit TextInPieces(const QStringList &pieces) : m_pieces(pieces) {}

    QStringList formats() const override;

protected:
    QVariant retrieveData(const QString &format, QMetaType type) const override;

private:
    const QStringList m_pieces;
};

} // namespace morvane
