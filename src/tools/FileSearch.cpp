#include "tools/FileSearch.h"

#include "base/Text.h"

#include <QFile>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

constexpr qint64 tooManyBytes = 5'000'000;
constexpr qsizetype matchesPerFile = 10;
constexpr qsizetype lineCharacters = 300;
/// Of work, for all matches in one file. Honest patterns need a few milliseconds for the largest files.
constexpr std::chrono::milliseconds timeLimit{1000};

QByteArrayView withoutByteOrderMark(QByteArrayView bytes)
{
    constexpr QByteArrayView mark = "\xef\xbb\xbf";
    return bytes.startsWith(mark) ? bytes.sliced(mark.size()) : bytes;
}

bool endsLine(QChar unit)
{
    return unit == u'\n' || unit == u'\r' || unit == u'\u0085' || unit == u'\u2028' || unit == u'\u2029';
}

/// Whether a line ends between two UTF-16 units: behind a line end, but not inside CR LF.
bool isLineStart(QStringView text, qsizetype position)
{
    if (position == 0)
        return true;
    const QChar before = text[position - 1];
    const bool isInPair = before == u'\r' && position < text.size() && text[position] == u'\n';
    return endsLine(before) && !isInPair;
}

/// The whole line or lines that a match touches.
QStringView linesAround(QStringView text, qsizetype start, qsizetype end)
{
    while (!isLineStart(text, start))
        --start;
    // A match that ends with a line end does not touch the line behind it.
    if (end == start || !isLineStart(text, end))
        while (end < text.size() && !endsLine(text[end]))
            ++end;
    return text.sliced(start, end - start);
}

} // namespace

std::expected<FileSearch, QString> FileSearch::compile(const QString &pattern, const QString &include)
{
    auto regex = Regex::compile(pattern);
    if (!regex)
        return std::unexpected(regex.error());
    FileSearch search(std::move(*regex), PatternPrefilter(pattern));
    search.m_includesAll = include.isEmpty();
    if (!search.m_includesAll)
        search.m_include = Glob::compile(include);
    return search;
}

FileSearch::Result FileSearch::search(const char *path, RegularFile::Links links, Buffer &buffer) const
{
    if (!includes(path))
        return {};
    auto file = RegularFile::open(path, links);
    if (!file || file->size() >= tooManyBytes)
        return {};
    // Files of the kernel tell no size and hold more.
    const qint64 capacity = file->size() > 0 ? file->size() : tooManyBytes;
    if (static_cast<qint64>(buffer.size()) < capacity)
        buffer.resize(static_cast<std::size_t>(capacity));
    const auto size = file->read(buffer.data(), capacity);
    if (!size || *size >= tooManyBytes)
        return {};
    const QByteArrayView bytes = withoutByteOrderMark({buffer.data(), *size});
    if (!m_prefilter.mayMatch(bytes) || !QByteArray::fromRawData(bytes.data(), bytes.size()).isValidUtf8())
        return {};
    return searchText(path, QString::fromUtf8(bytes));
}

bool FileSearch::includes(std::string_view path) const
{
    if (m_includesAll)
        return true;
    const std::string_view name = path.substr(path.rfind('/') + 1);
    return m_include && m_include->matches(name) == Glob::Answer::yes;
}

FileSearch::Result FileSearch::searchText(const char *path, const QString &text) const
{
    const auto matches = m_regex.findAll(text, matchesPerFile, timeLimit);
    if (!matches)
        return {{}, true};
    Result result;
    qsizetype number = 1;
    qsizetype counted = 0;
    for (const RegexMatch &match : *matches) {
        number += QStringView(text).sliced(counted, match.start() - counted).count(u'\n');
        counted = match.start();
        const QStringView line = linesAround(text, match.start(), match.end()).trimmed();
        result.lines.append(QFile::decodeName(path) + u':' + QString::number(number) + u": "_s +
                            line.first(characterOffset(line, lineCharacters)).toString());
    }
    return result;
}

} // namespace morvane
