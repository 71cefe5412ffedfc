#include "ui/conversation/SelectionReader.h"

#include "base/Overloaded.h"
#include "ui/conversation/MessageParts.h"
#include "ui/markdown/SegmentText.h"

#include <limits>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

QString SelectionReader::wholeText(QList<SelectedRow> rows)
{
    SelectionReader reader(std::move(rows));
    reader.read(std::numeric_limits<qsizetype>::max());
    return reader.text();
}

void SelectionReader::read(qsizetype letters)
{
    const qsizetype begin = m_text.size();
    while (!isAtEnd() && m_text.size() - begin < letters) {
        if (m_stretch) {
            readSegment();
            continue;
        }
        m_hasRowText = false;
        std::visit(Overloaded{
                       [this](const QString &text) { append(text); },
                       [this](const ChatMessage &message) {
                           SelectedStretch whole{
                               .message = message, .row = rowOf(message), .head = {}, .tail = {}};
                           whole.last = whole.row.segments.size() - 1;
                           this->begin(std::move(whole));
                       },
                       [this](const SelectedStretch &stretch) { this->begin(stretch); },
                   },
                   m_rows.at(m_next++));
    }
}

void SelectionReader::begin(SelectedStretch stretch)
{
    m_segment = stretch.first;
    m_part.reset();
    append(stretch.head);
    m_stretch = std::move(stretch);
}

void SelectionReader::readSegment()
{
    const QList<SegmentLayout> &segments = m_stretch->row.segments;
    const bool isTail = m_segment > m_stretch->last;
    const bool hasTail = !m_stretch->tail.isEmpty() && m_segment < segments.size();
    if (isTail && !hasTail) {
        m_stretch.reset();
        return;
    }
    const SegmentLayout &segment = segments.at(m_segment);
    if (m_part != segment.part) {
        m_part = segment.part;
        m_partText = partText(m_stretch->message, segment.part);
    }
    if (m_hasRowText)
        append(separatorBetween(m_partText, segments.at(m_segment - 1), segment));
    append(isTail ? m_stretch->tail : shownText(m_partText, segment.segment, m_stretch->row.references));
    ++m_segment;
    if (isTail)
        m_stretch.reset();
}

void SelectionReader::append(QStringView text)
{
    if (text.isEmpty())
        return;
    if (!m_hasRowText && !m_text.isEmpty())
        m_text += u"\n\n"_s;
    m_hasRowText = true;
    m_text += text;
}

} // namespace morvane
