#include "ui/markdown/MarkdownBuilder.h"

#include "ui/markdown/MarkdownParser.h"

#include <QTextDocumentFragment>
#include <QUrl>

#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// Deeper nesting than anyone writes would leave no width for the text.
constexpr int deepestIndent = 8;

QString decoded(const QString &entity)
{
    return QTextDocumentFragment::fromHtml(entity).toPlainText();
}

QString attributeText(const MD_ATTRIBUTE &attribute)
{
    QString text;
    for (int i = 0; attribute.substr_offsets[i] < attribute.size; ++i) {
        const MD_OFFSET from = attribute.substr_offsets[i];
        const QString part = QString::fromUtf8(attribute.text + from, attribute.substr_offsets[i + 1] - from);
        text += attribute.substr_types[i] == MD_TEXT_ENTITY ? decoded(part) : part;
    }
    return text;
}

MarkdownCell::Alignment alignmentOf(MD_ALIGN align)
{
    switch (align) {
    case MD_ALIGN_LEFT:
        return MarkdownCell::Alignment::left;
    case MD_ALIGN_CENTER:
        return MarkdownCell::Alignment::center;
    case MD_ALIGN_RIGHT:
        return MarkdownCell::Alignment::right;
    case MD_ALIGN_DEFAULT:
        break;
    }
    return MarkdownCell::Alignment::natural;
}

} // namespace

void MarkdownBuilder::enterBlock(MD_BLOCKTYPE type, const void *detail)
{
    switch (type) {
    case MD_BLOCK_QUOTE:
        endBlock();
        ++m_quotes;
        break;
    case MD_BLOCK_UL:
        endBlock();
        m_lists.append({.isTight = static_cast<const MD_BLOCK_UL_DETAIL *>(detail)->is_tight != 0});
        break;
    case MD_BLOCK_OL: {
        endBlock();
        const auto *list = static_cast<const MD_BLOCK_OL_DETAIL *>(detail);
        m_lists.append({.isOrdered = true, .next = list->start, .isTight = list->is_tight != 0});
        break;
    }
    case MD_BLOCK_LI:
        enterItem(*static_cast<const MD_BLOCK_LI_DETAIL *>(detail));
        break;
    case MD_BLOCK_HR:
        beginBlock(MarkdownBlock::Kind::rule);
        endBlock();
        break;
    case MD_BLOCK_H:
        beginBlock(MarkdownBlock::Kind::heading);
        m_blocks.last().level = static_cast<int>(static_cast<const MD_BLOCK_H_DETAIL *>(detail)->level);
        break;
    case MD_BLOCK_CODE:
        beginBlock(MarkdownBlock::Kind::code);
        break;
    case MD_BLOCK_P:
        beginBlock(MarkdownBlock::Kind::paragraph);
        break;
    case MD_BLOCK_TABLE:
        beginBlock(MarkdownBlock::Kind::table);
        m_inTable = true;
        break;
    case MD_BLOCK_TR:
        m_blocks.last().rows.emplaceBack();
        break;
    case MD_BLOCK_TH:
    case MD_BLOCK_TD:
        m_blocks.last().rows.last().append(
            {.runs = {}, .alignment = alignmentOf(static_cast<const MD_BLOCK_TD_DETAIL *>(detail)->align)});
        break;
    case MD_BLOCK_DOC:
    case MD_BLOCK_HTML:
    case MD_BLOCK_THEAD:
    case MD_BLOCK_TBODY:
        break;
    }
}

void MarkdownBuilder::leaveBlock(MD_BLOCKTYPE type)
{
    switch (type) {
    case MD_BLOCK_QUOTE:
        endBlock();
        --m_quotes;
        break;
    case MD_BLOCK_UL:
    case MD_BLOCK_OL:
        endBlock();
        m_lists.removeLast();
        break;
    case MD_BLOCK_LI:
        if (!m_pendingMarker.isEmpty())
            beginBlock(MarkdownBlock::Kind::paragraph);
        endBlock();
        break;
    case MD_BLOCK_CODE:
        if (!m_blocks.last().runs.isEmpty() && m_blocks.last().runs.last().text.endsWith(u'\n'))
            m_blocks.last().runs.last().text.chop(1);
        endBlock();
        break;
    case MD_BLOCK_H:
    case MD_BLOCK_P:
        endBlock();
        break;
    case MD_BLOCK_TABLE:
        m_inTable = false;
        endBlock();
        break;
    default:
        break;
    }
}

void MarkdownBuilder::enterItem(const MD_BLOCK_LI_DETAIL &detail)
{
    endBlock();
    List &list = m_lists.last();
    if (detail.is_task != 0)
        m_pendingMarker = detail.task_mark == ' ' ? u"☐"_s : u"☑"_s;
    else if (list.isOrdered)
        m_pendingMarker = QString::number(list.next) + u'.';
    else
        m_pendingMarker = u"•"_s;
    ++list.next;
}

void MarkdownBuilder::enterSpan(MD_SPANTYPE type, const void *detail)
{
    switch (type) {
    case MD_SPAN_EM:
        ++m_italic;
        break;
    case MD_SPAN_STRONG:
        ++m_bold;
        break;
    case MD_SPAN_CODE:
        ++m_code;
        break;
    case MD_SPAN_DEL:
        ++m_strikethrough;
        break;
    case MD_SPAN_A:
        m_links.append({attributeText(static_cast<const MD_SPAN_A_DETAIL *>(detail)->href), {}});
        break;
    case MD_SPAN_IMG:
        m_links.append({attributeText(static_cast<const MD_SPAN_IMG_DETAIL *>(detail)->src), {}});
        break;
    default:
        break;
    }
}

void MarkdownBuilder::leaveSpan(MD_SPANTYPE type)
{
    switch (type) {
    case MD_SPAN_EM:
        --m_italic;
        break;
    case MD_SPAN_STRONG:
        --m_bold;
        break;
    case MD_SPAN_CODE:
        --m_code;
        break;
    case MD_SPAN_DEL:
        --m_strikethrough;
        break;
    case MD_SPAN_A:
    case MD_SPAN_IMG:
        leaveLink();
        break;
    default:
        break;
    }
}

void MarkdownBuilder::addText(MD_TEXTTYPE type, const QString &text)
{
    switch (type) {
    case MD_TEXT_BR:
    case MD_TEXT_SOFTBR:
        addRun(QString(QChar::LineSeparator));
        break;
    case MD_TEXT_NULLCHAR:
        addRun(QString(QChar::ReplacementCharacter));
        break;
    case MD_TEXT_ENTITY:
        addRun(decoded(text));
        break;
    default:
        addRun(text);
    }
}

void MarkdownBuilder::addRun(const QString &text)
{
    if (text.isEmpty())
        return;
    if (!m_inTable && !m_isOpen)
        beginBlock(MarkdownBlock::Kind::paragraph);
    MarkdownRun run{.text = text, .style = style(), .link = {}};
    for (Link &link : m_links)
        link.text += text;
    if (!m_links.isEmpty() && isSafeLink(m_links.last().address))
        run.link = m_links.last().address;
    append(std::move(run));
}

void MarkdownBuilder::leaveLink()
{
    const Link link = m_links.takeLast();
    if (!isSafeLink(link.address) || link.text.isEmpty())
        return;
    const QUrl url(link.address, QUrl::StrictMode);
    const QString place = url.host().isEmpty() ? url.path() : url.host(QUrl::FullyEncoded);
    if (!link.text.contains(place, Qt::CaseInsensitive))
        append({.text = u" ("_s + place + u')', .style = MarkdownRun::aside, .link = {}});
}

void MarkdownBuilder::append(MarkdownRun run)
{
    auto &runs = m_inTable ? m_blocks.last().rows.last().last().runs : m_blocks.last().runs;
    if (!runs.isEmpty() && runs.last().style == run.style && runs.last().link == run.link)
        runs.last().text += run.text;
    else
        runs.append(std::move(run));
}

MarkdownRun::Style MarkdownBuilder::style() const
{
    MarkdownRun::Style style;
    style.setFlag(MarkdownRun::bold, m_bold > 0);
    style.setFlag(MarkdownRun::italic, m_italic > 0);
    style.setFlag(MarkdownRun::code, m_code > 0);
    style.setFlag(MarkdownRun::strikethrough, m_strikethrough > 0);
    return style;
}

void MarkdownBuilder::beginBlock(MarkdownBlock::Kind kind)
{
    MarkdownBlock block;
    block.kind = kind;
    block.indent = qMin(static_cast<int>(m_lists.size()) + m_quotes, deepestIndent);
    block.marker = std::exchange(m_pendingMarker, QString());
    block.isTight =
        !m_lists.isEmpty() && m_lists.last().isTight && !m_blocks.isEmpty() && m_blocks.last().indent > 0;
    m_blocks.append(std::move(block));
    m_isOpen = true;
}

void MarkdownBuilder::endBlock()
{
    m_isOpen = false;
}

QList<MarkdownBlock> MarkdownBuilder::takeBlocks()
{
    return std::exchange(m_blocks, QList<MarkdownBlock>());
}

} // namespace morvane
