#include "ui/markdown/MarkdownParser.h"

#include "ui/markdown/MarkdownBuilder.h"

#include <QStringList>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

MarkdownBuilder &builder(void *userData)
{
    return *static_cast<MarkdownBuilder *>(userData);
}

int enterBlock(MD_BLOCKTYPE type, void *detail, void *userData)
{
    builder(userData).enterBlock(type, detail);
    return 0;
}

int leaveBlock(MD_BLOCKTYPE type, void *, void *userData)
{
    builder(userData).leaveBlock(type);
    return 0;
}

int enterSpan(MD_SPANTYPE type, void *detail, void *userData)
{
    builder(userData).enterSpan(type, detail);
    return 0;
}

int leaveSpan(MD_SPANTYPE type, void *, void *userData)
{
    builder(userData).leaveSpan(type);
    return 0;
}

int addText(MD_TEXTTYPE type, const MD_CHAR *text, MD_SIZE size, void *userData)
{
    builder(userData).addText(type, QString::fromUtf8(text, size));
    return 0;
}

QString runsText(const QList<MarkdownRun> &runs)
{
    QString text;
    for (const MarkdownRun &run : runs)
        text += run.text;
    return text.replace(QChar::LineSeparator, u'\n');
}

} // namespace

QList<MarkdownBlock> parseMarkdown(QStringView source)
{
    constexpr MD_PARSER parser{.abi_version = 0,
                               .flags = MD_DIALECT_GITHUB | MD_FLAG_NOHTML | MD_FLAG_NOINDENTEDCODEBLOCKS,
                               .enter_block = enterBlock,
                               .leave_block = leaveBlock,
                               .enter_span = enterSpan,
                               .leave_span = leaveSpan,
                               .text = addText,
                               .debug_log = nullptr,
                               .syntax = nullptr};
    const QByteArray bytes = source.toUtf8();
    MarkdownBuilder result;
    if (md_parse(bytes.constData(), static_cast<MD_SIZE>(bytes.size()), &parser, &result) != 0) {
        MarkdownBlock plain;
        plain.runs.append({.text = source.toString(), .style = {}, .link = {}});
        return {plain};
    }
    return result.takeBlocks();
}

QString markdownPlainText(const QList<MarkdownBlock> &blocks)
{
    QStringList lines;
    for (const MarkdownBlock &block : blocks) {
        const QString indent((qMax(1, block.indent) - 1) * 2, u' ');
        if (block.kind == MarkdownBlock::Kind::table) {
            for (const QList<MarkdownCell> &row : block.rows) {
                QStringList cells;
                for (const MarkdownCell &cell : row)
                    cells += runsText(cell.runs);
                lines += cells.join(u'\t');
            }
        } else if (block.kind == MarkdownBlock::Kind::rule) {
            lines += u"---"_s;
        } else {
            lines +=
                indent + (block.marker.isEmpty() ? QString() : block.marker + u' ') + runsText(block.runs);
        }
    }
    return lines.join(u'\n');
}

bool isSafeLink(const QString &address)
{
    const QUrl url(address, QUrl::StrictMode);
    const QString scheme = url.scheme();
    if (scheme == "mailto"_L1)
        return url.isValid() && !url.path().isEmpty();
    return (scheme == "http"_L1 || scheme == "https"_L1) && url.isValid() && !url.host().isEmpty();
}

} // namespace morvane
