#include "net/LineBuffer.h"

#include <algorithm>
#include <cstring>

namespace morvane {

namespace {

const char *find(char wanted, const char *begin, const char *end)
{
    const void *found = std::memchr(begin, wanted, static_cast<std::size_t>(end - begin));
    return found ? static_cast<const char *>(found) : end;
}

} // namespace

bool LineBuffer::append(QByteArrayView bytes)
{
    const char *position = bytes.data();
    const char *const end = position + bytes.size();
    if (position == end)
        return true;
    // Each kind of line end is searched for only when the one that was found is behind us, so that a stream
    // that knows but one kind is passed over once.
    const char *lineFeed = find('\n', position, end);
    const char *carriageReturn = find('\r', position, end);
    while (position != end) {
        if (lineFeed < position)
            lineFeed = find('\n', position, end);
        if (carriageReturn < position)
            carriageReturn = find('\r', position, end);
        const char *const lineEnd = std::min(lineFeed, carriageReturn);
        if (!extendLine(QByteArrayView(position, lineEnd)))
            return false;
        if (lineEnd == end)
            break;
        endLine();
        position = lineEnd + 1;
    }
    return true;
}

void LineBuffer::finish()
{
    endLine();
}

qsizetype LineBuffer::size() const
{
    return m_batch.bytes.size() + m_batch.count() * qsizetype(sizeof(qsizetype));
}

LineBatch LineBuffer::takeLines()
{
    LineBatch lines = std::move(m_batch);
    m_batch = {};
    m_batch.bytes = lines.bytes.sliced(m_lineBegin);
    lines.bytes.truncate(m_lineBegin);
    m_lineBegin = 0;
    return lines;
}

bool LineBuffer::extendLine(QByteArrayView piece)
{
    if (m_batch.bytes.size() - m_lineBegin + piece.size() > m_maximumLineBytes)
        return false;
    m_batch.bytes.append(piece.data(), piece.size());
    return true;
}

void LineBuffer::endLine()
{
    if (m_batch.bytes.size() == m_lineBegin)
        return;
    m_lineBegin = m_batch.bytes.size();
    m_batch.ends.push_back(m_lineBegin);
}

} // namespace morvane
