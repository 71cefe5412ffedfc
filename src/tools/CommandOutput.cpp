#include "tools/CommandOutput.h"

#include <algorithm>

namespace morvane {
namespace {

/// Room for 4,000 characters of 250 bytes; those that people write have up to some 30.
constexpr qsizetype keptBytes = 1 << 20;

/// Room for 4,000 blank characters, of which CR LF is the longest.
constexpr qsizetype keptBlanks = 8'000;

bool isBlank(char byte)
{
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

/// How many bytes at the end begin a character that is not finished there, 0 to 3.
qsizetype unfinishedBytes(QByteArrayView bytes)
{
    const qsizetype longest = std::min<qsizetype>(3, bytes.size());
    for (qsizetype length = 1; length <= longest; ++length) {
        const auto byte = static_cast<unsigned char>(bytes[bytes.size() - length]);
        if (byte < 0x80)
            return 0;
        if (byte >= 0xc0) {
            const qsizetype needed = byte >= 0xf0 ? 4 : byte >= 0xe0 ? 3 : 2;
            return needed > length ? length : 0;
        }
    }
    return 0;
}

} // namespace

void CommandOutput::append(QByteArrayView bytes)
{
    if (!m_isUtf8)
        return;
    check(bytes);
    keep(bytes);
}

void CommandOutput::finish()
{
    m_isUtf8 = m_isUtf8 && m_unfinished.isEmpty();
}

QString CommandOutput::text() const
{
    if (!m_isUtf8)
        return {};
    QByteArrayView whole = m_kept;
    whole.chop(m_droppedText ? unfinishedBytes(whole) : std::min(m_unfinished.size(), whole.size()));
    QString text = QString::fromUtf8(whole);
    if (m_droppedText)
        text += u'x';
    return text;
}

void CommandOutput::check(QByteArrayView bytes)
{
    QByteArray joined;
    if (!m_unfinished.isEmpty()) {
        joined = m_unfinished;
        joined += bytes;
        bytes = joined;
    }
    const qsizetype unfinished = unfinishedBytes(bytes);
    const QByteArrayView finished = bytes.chopped(unfinished);
    m_isUtf8 = QByteArray::fromRawData(finished.data(), finished.size()).isValidUtf8();
    m_unfinished = bytes.last(unfinished).toByteArray();
    if (!m_isUtf8)
        m_kept = QByteArray();
}

void CommandOutput::keep(QByteArrayView bytes)
{
    if (m_kept.isEmpty()) {
        const qsizetype blanks = std::find_if_not(bytes.begin(), bytes.end(), isBlank) - bytes.begin();
        m_leadingBlanks += bytes.first(std::min(blanks, keptBlanks - m_leadingBlanks.size()));
        bytes = bytes.sliced(blanks);
    }
    const qsizetype room = std::min(keptBytes - m_kept.size(), bytes.size());
    m_kept += bytes.first(room);
    m_droppedText = m_droppedText || !std::all_of(bytes.begin() + room, bytes.end(), isBlank);
}

} // namespace morvane
