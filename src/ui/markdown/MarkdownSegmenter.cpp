#include "ui/markdown/MarkdownSegmenter.h"

#include "ui/markdown/LayoutCost.h"
#include "ui/markdown/MarkdownParser.h"
#include "ui/markdown/PlainTextSegmenter.h"

namespace morvane {

namespace {

constexpr int codeIndent = 4;
/// More than this many characters of link definitions would be parsed again for every segment.
constexpr qsizetype referencesLimit = 16'000;
/// The heading of a table is laid out again for every segment of it.
constexpr qsizetype tableHeadLimit = segmentLimit / 2;

/// A fence may also open right behind the marker of a list item.
std::optional<CodeFence> fenceOpenedBy(const MarkdownLine &line)
{
    if (!line.isListItem())
        return CodeFence::opening(line);
    const qsizetype markerEnd = line.trimmed.indexOf(u' ');
    if (markerEnd < 0)
        return std::nullopt;
    auto fence = CodeFence::opening(MarkdownLine(line.trimmed.sliced(markerEnd)));
    if (fence)
        fence->indent += line.indent + static_cast<int>(markerEnd);
    return fence;
}

} // namespace

MarkdownSegments MarkdownSegmenter::segments(QStringView text)
{
    MarkdownSegmenter segmenter(text);
    segmenter.run();
    return std::move(segmenter.m_result);
}

void MarkdownSegmenter::run()
{
    qsizetype at = 0;
    while (at < m_text.size()) {
        const qsizetype lineEnd = m_text.indexOf(u'\n', at);
        const qsizetype end = lineEnd < 0 ? m_text.size() : lineEnd;
        const QStringView line = m_text.sliced(at, end - at);
        m_lineCost = layoutCost(line) + 1;
        if (line.isEmpty())
            addEmptyLine(at);
        else
            addLine(MarkdownLine(line), at, end);
        m_cost += m_lineCost;
        m_previousLine = at;
        at = end + 1;
        ++m_line;
    }
    if (m_fence || m_inIndentedCode)
        closeCode();
    else
        flushText();
    if (m_result.segments.isEmpty())
        m_result.segments.append({.kind = TextSegment::Kind::markdown});
}

void MarkdownSegmenter::addEmptyLine(qsizetype at)
{
    // There may be a million of them.
    if (m_fence) {
        addCodeLine(at, at);
    } else if (!m_inIndentedCode) {
        m_afterBlank = true;
        m_tableHead = -1;
    }
}

void MarkdownSegmenter::addLine(const MarkdownLine &line, qsizetype from, qsizetype end)
{
    if (m_fence) {
        if (m_fence->isClosedBy(line))
            closeCode();
        else
            addCodeLine(from, end);
        return;
    }
    if (m_inIndentedCode) {
        if (line.isBlank())
            return;
        if (line.indent >= codeIndent) {
            addCodeLine(from, end);
            return;
        }
        closeCode();
    }
    if (auto fence = fenceOpenedBy(line)) {
        flushText();
        m_inList = m_inList || line.isListItem();
        m_fence = std::move(fence);
        m_opening = from;
        m_firstCode = m_result.segments.size();
        return;
    }
    if (opensIndentedCode(line)) {
        flushText();
        m_inIndentedCode = true;
        m_firstCode = m_result.segments.size();
        addCodeLine(from, end);
        return;
    }
    addTextLine(line, from, end);
}

bool MarkdownSegmenter::opensIndentedCode(const MarkdownLine &line) const
{
    return m_afterBlank && !m_inList && m_indent == 0 && line.indent >= codeIndent && !line.isBlank();
}

void MarkdownSegmenter::addCodeLine(qsizetype from, qsizetype end)
{
    if (m_from >= 0 && isFull()) {
        append(m_from, m_end, TextSegment::Kind::code);
        m_from = -1;
    }
    if (m_from < 0)
        start(from, {});
    while (isFull())
        cutWithinLine(end, TextSegment::Kind::code);
    m_end = end;
}

void MarkdownSegmenter::closeCode()
{
    if (m_from >= 0)
        append(m_from, m_end, TextSegment::Kind::code);
    auto &segments = m_result.segments;
    for (qsizetype i = m_firstCode; i < segments.size(); ++i) {
        segments[i].startsBlock = i == m_firstCode;
        segments[i].endsBlock = i == segments.size() - 1;
    }
    m_indent = m_fence && m_inList ? m_fence->indent : 0;
    m_from = -1;
    m_opening = -1;
    m_fence.reset();
    m_inIndentedCode = false;
    m_afterBlank = true;
}

void MarkdownSegmenter::addTextLine(const MarkdownLine &line, qsizetype from, qsizetype end)
{
    if (line.isBlank()) {
        m_afterBlank = true;
        m_tableHead = -1;
        return;
    }
    if (m_indent > 0 && line.indent < m_indent) {
        flushText();
        m_indent = 0;
    }
    noteReference(line);
    noteTable(line, from);
    noteItem(line);
    const Rank rank = rankBefore(line);
    const Opening opening = openingOf(line, rank);
    if (m_from < 0) {
        start(from, opening);
    } else {
        const bool isTableBody = m_tableHead >= 0 && from > m_tableDelimiter;
        m_cuts[rank] = {.at = from,
                        .line = m_line,
                        .cost = m_cost,
                        .tableHead = isTableBody ? m_tableHead : -1,
                        .opening = opening};
    }
    if (line.isListItem()) {
        m_inList = true;
    } else if (line.isHeading() || (m_afterBlank && line.indent == 0)) {
        m_inList = false;
        m_itemNumber = -1;
    }
    m_afterBlank = false;
    m_afterHeading = line.isHeading();
    while (isFull())
        cut(end);
    m_end = end;
}

void MarkdownSegmenter::noteTable(const MarkdownLine &line, qsizetype from)
{
    if (m_tableHead < 0) {
        const bool isShort = from - m_previousLine + line.text.size() < tableHeadLimit;
        if (line.isTableDelimiter() && !m_afterBlank && m_previousLine >= 0 && isShort) {
            m_tableHead = m_previousLine;
            m_tableDelimiter = from;
        }
    } else if (!line.trimmed.contains(u'|')) {
        m_tableHead = -1;
    }
}

void MarkdownSegmenter::noteReference(const MarkdownLine &line)
{
    const bool isDefinition =
        line.indent < codeIndent && line.trimmed.startsWith(u'[') && line.trimmed.indexOf(u"]:") > 1;
    // What only looks like one is text, and must not be repeated below every segment.
    if (isDefinition && m_result.references.size() + line.trimmed.size() < referencesLimit &&
        parseMarkdown(line.trimmed).isEmpty()) {
        m_result.references += line.trimmed;
        m_result.references += u'\n';
    }
}

MarkdownSegmenter::Rank MarkdownSegmenter::rankBefore(const MarkdownLine &line) const
{
    const int indent = line.indent - m_indent;
    if (m_inList) {
        if (line.isListItem())
            return indent <= 1 ? betweenItems : betweenLines;
        return line.isHeading() || (m_afterBlank && indent <= 0) ? betweenBlocks : betweenLines;
    }
    return m_afterBlank || m_afterHeading || line.isHeading() ? betweenBlocks : betweenLines;
}

void MarkdownSegmenter::noteItem(const MarkdownLine &line)
{
    if (!line.isListItem() || line.indent - m_indent > 1)
        return;
    const std::optional<int> number = line.itemNumber();
    const bool goesOn = m_inList && m_itemNumber >= 0;
    m_itemNumber = !number ? -1 : goesOn ? m_itemNumber + 1 : *number;
}

MarkdownSegmenter::Opening MarkdownSegmenter::openingOf(const MarkdownLine &line, Rank rank) const
{
    using Joint = TextSegment::Joint;
    const bool isTopItem = line.isListItem() && line.indent - m_indent <= 1;
    Opening opening{.joint = Joint::line, .number = isTopItem ? m_itemNumber : -1};
    if (line.isHeading())
        opening.joint = Joint::heading;
    else if (rank == betweenBlocks || m_afterBlank)
        opening.joint = Joint::block;
    else if (line.isListItem())
        opening.joint = Joint::item;
    return opening;
}

void MarkdownSegmenter::start(qsizetype from, const Opening &opening)
{
    m_from = from;
    m_begins = opening;
    m_firstLine = m_line;
    m_firstCost = m_cost;
}

bool MarkdownSegmenter::isFull() const
{
    return m_cost + m_lineCost - m_firstCost > segmentLimit + 1 || m_line - m_firstLine >= segmentLineLimit;
}

void MarkdownSegmenter::cutWithinLine(qsizetype end, TextSegment::Kind kind)
{
    const QStringView rest = m_text.sliced(m_from, end - m_from);
    const qsizetype length = cutPosition(rest, affordableLength(rest, segmentLimit));
    append(m_from, m_from + length, kind);
    m_begins = {.joint = TextSegment::Joint::line, .number = -1};
    m_firstCost += layoutCost(rest.first(length));
    if (length > 0 && length < rest.size())
        m_firstCost += seamCost(rest[length - 1], rest[length]);
    m_firstLine = m_line;
    m_from += length;
}

void MarkdownSegmenter::cut(qsizetype end)
{
    for (int rank = betweenBlocks; rank >= betweenLines; --rank) {
        const Cut best = m_cuts[static_cast<std::size_t>(rank)];
        if (best.at > m_from) {
            append(m_from, best.at, TextSegment::Kind::markdown);
            m_from = best.at;
            m_firstLine = best.line;
            m_firstCost = best.cost;
            m_opening = best.tableHead;
            m_begins = best.opening;
            return;
        }
    }
    cutWithinLine(end, TextSegment::Kind::markdown);
}

void MarkdownSegmenter::flushText()
{
    if (m_from >= 0)
        append(m_from, m_end, TextSegment::Kind::markdown);
    m_from = -1;
    m_opening = -1;
    m_cuts = {};
}

void MarkdownSegmenter::append(qsizetype from, qsizetype end, TextSegment::Kind kind)
{
    if (kind == TextSegment::Kind::markdown)
        while (end > from && m_text.at(end - 1).isSpace())
            --end;
    const int indent = kind != TextSegment::Kind::code ? m_indent : m_fence ? m_fence->indent : codeIndent;
    m_result.segments.append({.from = from,
                              .length = end - from,
                              .opening = m_opening,
                              .kind = kind,
                              .joint = m_begins.joint,
                              .number = m_begins.number,
                              .indent = static_cast<quint8>(qMin(indent, 255))});
}

} // namespace morvane
