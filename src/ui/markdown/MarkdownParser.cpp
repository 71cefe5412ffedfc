#include "ui/markdown/MarkdownParser.h"

#include "ui/markdown/MarkdownBuilder.h"

#include <QStringList>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// Stands for a tilde that strikes nothing while the library reads; no text has it, since it is no character.
constexpr char16_t plainTilde = 0xfdd2;

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
    builder(userData).addText(type, QString::fromUtf8(text, size).replace(QChar(plainTilde), u'~'));
    return 0;
}

bool isAddress(QStringView word)
{
    return word.contains(u"://"_s) || word.startsWith(u"www."_s) || word.contains(u'@');
}

/// The library strikes between single tildes too, but "3~5 days for 10~20 people" means them. In an address a
/// tilde strikes nothing, and there it has to stay what it is.
void keepSingleTildes(QString &source)
{
    source.replace(QChar(plainTilde), QChar::ReplacementCharacter);
    const auto isTilde = [&source](qsizetype at) {
        return at >= 0 && at < source.size() && source[at] == u'~';
    };
    const auto isBlank = [&source](qsizetype at) {
        return at < 0 || at == source.size() || source[at].isSpace();
    };
    qsizetype wordStart = 0;
    for (qsizetype at = source.indexOf(u'~'); at >= 0; at = source.indexOf(u'~', at + 1)) {
        if (isTilde(at - 1) || isTilde(at + 1))
            continue;
        qsizetype from = at;
        while (from > wordStart && !isBlank(from - 1))
            --from;
        qsizetype end = at;
        while (!isBlank(end))
            ++end;
        const bool keeps = isAddress(QStringView(source).sliced(from, end - from));
        for (qsizetype i = at; i < end; ++i)
            if (source[i] == u'~' && !keeps && !isTilde(i - 1) && !isTilde(i + 1))
                source[i] = QChar(plainTilde);
        wordStart = end;
        at = end - 1;
    }
}

/// "[^1]: word" is a footnote to the eye, but a link's definition, which is not shown, to the library.
void keepFootnotes(QString &source)
{
    for (qsizetype at = source.indexOf(u"[^"_s); at >= 0; at = source.indexOf(u"[^"_s, at + 3)) {
        const qsizetype lineStart = source.lastIndexOf(u'\n', at) + 1;
        const bool startsLine = QStringView(source).sliced(lineStart, at - lineStart).trimmed().isEmpty();
        const qsizetype lineEnd = source.indexOf(u'\n', at);
        const QStringView line = QStringView(source).sliced(at, (lineEnd < 0 ? source.size() : lineEnd) - at);
        if (startsLine && line.contains(u"]:"_s))
            source.insert(at, u'\\');
    }
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
    QString text = source.toString();
    keepSingleTildes(text);
    keepFootnotes(text);
    const QByteArray bytes = text.toUtf8();
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
        if (!lines.isEmpty() && !block.isTight)
            lines += QString();
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
