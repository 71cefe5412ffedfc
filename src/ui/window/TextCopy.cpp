#include "ui/window/TextCopy.h"

#include "ui/window/TextInPieces.h"

#include <QClipboard>
#include <QGuiApplication>
#include <algorithm>
#include <numeric>
#include <utility>

namespace morvane {

namespace {

/// UTF-16 units that are made bytes in one go; that takes half a millisecond.
constexpr qsizetype slice = 500'000;
/// That a unit becomes.
constexpr qsizetype mostBytes = 3;

qsizetype sizeOf(const QStringList &pieces)
{
    return std::accumulate(pieces.begin(), pieces.end(), qsizetype(0),
                           [](qsizetype sum, const QString &piece) { return sum + piece.size(); });
}

} // namespace

TextCopy::TextCopy()
{
    m_timer.setInterval(0);
    connect(&m_timer, &QTimer::timeout, this, &TextCopy::goOn);
    connect(QGuiApplication::clipboard(), &QClipboard::dataChanged, &m_timer, &QTimer::stop);
}

void TextCopy::copy(const QStringList &pieces)
{
    m_pieces = pieces;
    m_piece = m_at = 0;
    m_bytes.clear();
    // Growing would move many megabytes; what is not written takes no memory.
    m_bytes.reserve(mostBytes * sizeOf(pieces));
    m_encoder.resetState();
    m_timer.start();
    goOn();
}

void TextCopy::goOn()
{
    for (qsizetype left = slice; left > 0 && m_piece < m_pieces.size();) {
        const QStringView piece = m_pieces.at(m_piece);
        const QStringView next = piece.sliced(m_at, std::min(left, piece.size() - m_at));
        m_bytes += QByteArray(m_encoder.encode(next));
        m_at += next.size();
        left -= next.size();
        if (m_at == piece.size()) {
            ++m_piece;
            m_at = 0;
        }
    }
    if (m_piece < m_pieces.size())
        return;
    m_timer.stop();
    m_bytes.squeeze();
    QGuiApplication::clipboard()->setMimeData(
        new TextInPieces(std::exchange(m_pieces, {}), std::exchange(m_bytes, {})));
}

} // namespace morvane
