#include "net/PieceReader.h"

#include "net/ResponseWait.h"

namespace morvane {

Task<QByteArray> PieceReader::next()
{
    co_await ResponseWait(m_body, ResponseChannel::Until::piece);
    co_return m_body.takePiece();
}

} // namespace morvane
