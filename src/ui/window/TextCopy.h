#pragma once

#include <QObject>
#include <QStringEncoder>
#include <QStringList>
#include <QTimer>

namespace morvane {

/// Puts a text in pieces on the clipboard: at once where it is short. Of a long one the bytes are made first,
/// in slices that hold nobody up, since the toolkit wants all of them at once when another program asks.
/// Main thread.
class TextCopy : public QObject {
    Q_OBJECT
public:
    TextCopy();

    /// Takes the place of what is still being copied; gives way to what others copy meanwhile.
    void copy(const QStringList &pieces);

private:
    void goOn();

    QStringList m_pieces;
    qsizetype m_piece = 0; ///< Whose bytes come next,
    qsizetype m_at = 0;    ///< from here on.
    QByteArray m_bytes;
    QStringEncoder m_encoder{QStringEncoder::Utf8};
    QTimer m_timer;
};

} // namespace morvane
