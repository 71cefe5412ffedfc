#include "ui/markdown/MarkdownLine.h"

#include <algorithm>

namespace morvane {

namespace {

constexpr int tabWidth = 4;

bool isBlankCharacter(QChar character)
{
    return character == u' ' || character == u'\t';
}

qsizetype leadingCount(QStringView text, QChar mark)
{
    const auto end = std::find_if(text.begin(), text.end(), [mark](QChar c) { return c != mark; });
    return end - text.begin();
}

/// As many as the number of a list item may have.
qsizetype leadingDigits(QStringView text)
{
    constexpr qsizetype most = 9;
    qsizetype digits = 0;
    while (digits < text.size() && digits < most && text.at(digits) >= u'0' && text.at(digits) <= u'9')
        ++digits;
    return digits;
}

int nextColumn(int column, QChar character)
{
    return character == u'\t' ? (column / tabWidth + 1) * tabWidth : column + 1;
}

} // namespace

MarkdownLine::MarkdownLine(QStringView line) : text(line)
{
    while (text.startsWith(u'>')) {
        isQuoted = true;
        text = text.sliced(1);
        if (text.startsWith(u' '))
            text = text.sliced(1);
    }
    trimmed = text.trimmed();
    for (const QChar character : text) {
        if (!isBlankCharacter(character))
            break;
        indent = nextColumn(indent, character);
    }
}

bool MarkdownLine::isListItem() const
{
    if (trimmed.isEmpty())
        return false;
    const QChar first = trimmed.front();
    if (first == u'-' || first == u'*' || first == u'+')
        return trimmed.size() == 1 || isBlankCharacter(trimmed.at(1));
    const qsizetype digits = leadingDigits(trimmed);
    if (digits == 0 || digits >= trimmed.size() || (trimmed.at(digits) != u'.' && trimmed.at(digits) != u')'))
        return false;
    return digits + 1 == trimmed.size() || isBlankCharacter(trimmed.at(digits + 1));
}

std::optional<int> MarkdownLine::itemNumber() const
{
    const qsizetype digits = leadingDigits(trimmed);
    return isListItem() && digits > 0 ? std::optional(trimmed.first(digits).toInt()) : std::nullopt;
}

bool MarkdownLine::isHeading() const
{
    const qsizetype marks = leadingCount(trimmed, u'#');
    return marks >= 1 && marks <= 6 && indent < tabWidth &&
           (marks == trimmed.size() || isBlankCharacter(trimmed.at(marks)));
}

bool MarkdownLine::isTableDelimiter() const
{
    return trimmed.contains(u'-') && trimmed.contains(u'|') &&
           std::all_of(trimmed.begin(), trimmed.end(),
                       [](QChar c) { return c == u'|' || c == u'-' || c == u':' || isBlankCharacter(c); });
}

QStringView dedented(QStringView line, int columns)
{
    int column = 0;
    qsizetype at = 0;
    while (at < line.size() && column < columns && isBlankCharacter(line.at(at))) {
        column = nextColumn(column, line.at(at));
        ++at;
    }
    return line.sliced(at);
}

std::optional<CodeFence> CodeFence::opening(const MarkdownLine &line)
{
    if (line.trimmed.isEmpty() || (line.trimmed.front() != u'`' && line.trimmed.front() != u'~'))
        return std::nullopt;
    CodeFence fence;
    fence.mark = line.trimmed.front();
    fence.length = leadingCount(line.trimmed, fence.mark);
    const QStringView info = line.trimmed.sliced(fence.length).trimmed();
    if (fence.length < 3 || (fence.mark == u'`' && info.contains(u'`')))
        return std::nullopt;
    fence.indent = line.indent;
    fence.isQuoted = line.isQuoted;
    const auto languageEnd =
        std::find_if(info.begin(), info.end(), [](QChar c) { return c.isSpace() || c == u'{'; });
    fence.language = info.first(languageEnd - info.begin()).toString();
    return fence;
}

bool CodeFence::isClosedBy(const MarkdownLine &line) const
{
    return line.trimmed.size() >= length && leadingCount(line.trimmed, mark) == line.trimmed.size();
}

} // namespace morvane
