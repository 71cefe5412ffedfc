#include "ui/markdown/SegmentText.h"

#include "ui/markdown/MarkdownLine.h"
#include "ui/markdown/MarkdownParser.h"

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// Calls `use` with each line of `text`, without its end.
template <typename Use> void forEachLine(QStringView text, Use use)
{
    qsizetype at = 0;
    while (at <= text.size()) {
        qsizetype end = text.indexOf(u'\n', at);
        if (end < 0)
            end = text.size();
        QStringView line = text.sliced(at, end - at);
        if (line.endsWith(u'\r'))
            line.chop(1);
        use(line);
        at = end + 1;
    }
}

MarkdownLine lineAt(QStringView text, qsizetype from)
{
    const qsizetype end = text.indexOf(u'\n', from);
    return MarkdownLine(text.sliced(from, (end < 0 ? text.size() : end) - from));
}

/// Gives the list item that begins at `at` its place in the whole list: sources often number all items "1.".
void setItemNumber(QString &source, qsizetype at, int number)
{
    while (at < source.size() && source[at].isSpace())
        ++at;
    qsizetype end = at;
    while (end < source.size() && source[end].isDigit())
        ++end;
    source.replace(at, end - at, QString::number(number));
}

QString shownLines(QStringView text, const TextSegment &segment)
{
    QString lines;
    lines.reserve(segment.length);
    bool isFirst = true;
    forEachLine(text.sliced(segment.from, segment.length), [&](QStringView view) {
        const MarkdownLine line(view);
        if (line.isBacktickLine())
            return;
        if (!isFirst)
            lines += u'\n';
        isFirst = false;
        lines += dedented(line.text, segment.indent);
    });
    return lines;
}

} // namespace

QString markdownSource(QStringView text, const TextSegment &segment, const QString &references)
{
    QString source;
    if (segment.opening >= 0) {
        const qsizetype delimiter = text.indexOf(u'\n', segment.opening) + 1;
        source += dedented(lineAt(text, segment.opening).text, segment.indent).toString() + u'\n';
        source += dedented(lineAt(text, delimiter).text, segment.indent).toString() + u'\n';
    }
    const qsizetype start = source.size();
    source += shownLines(text, segment);
    if (segment.number >= 0)
        setItemNumber(source, start, segment.number);
    if (!references.isEmpty())
        source += "\n\n"_L1 + references;
    return source;
}

QString shownText(QStringView text, const TextSegment &segment, const QString &references)
{
    switch (segment.kind) {
    case TextSegment::Kind::markdown:
        return markdownPlainText(parseMarkdown(markdownSource(text, segment, references)));
    case TextSegment::Kind::code:
        return codeText(text, segment);
    case TextSegment::Kind::plain:
        break;
    }
    QStringView shown = text.sliced(segment.from, segment.length);
    if (shown.endsWith(u'\n'))
        shown.chop(1);
    return shown.toString();
}

QString codeText(QStringView text, const TextSegment &segment)
{
    return shownLines(text, segment);
}

QString copiedCode(QStringView text, const TextSegment &block)
{
    const bool isQuoted = block.opening >= 0 && lineAt(text, block.opening).isQuoted;
    if (isQuoted)
        return codeText(text, block);
    QString code;
    bool isFirst = true;
    forEachLine(text.sliced(block.from, block.length), [&](QStringView line) {
        if (!isFirst)
            code += u'\n';
        isFirst = false;
        code += dedented(line, block.indent);
    });
    return code;
}

QString codeLanguage(QStringView text, const TextSegment &segment)
{
    if (segment.opening < 0)
        return {};
    const MarkdownLine line = lineAt(text, segment.opening);
    const qsizetype marks = qMax(line.trimmed.lastIndexOf(u'`'), line.trimmed.lastIndexOf(u'~'));
    const QString info = line.trimmed.sliced(marks + 1).trimmed().toString();
    return info.section(u' ', 0, 0).section(u'{', 0, 0);
}

QString documentText(QString text)
{
    for (QChar &character : text) {
        const char16_t unit = character.unicode();
        const bool isStructure = unit == 0xfffc || unit == 0xfdd0 || unit == 0xfdd1 || unit == 0;
        if (isStructure)
            character = QChar::ReplacementCharacter;
    }
    return text;
}

} // namespace morvane
