#include "tools/SearchTools.h"

#include "tools/FilePaths.h"
#include "tools/FileSearch.h"
#include "tools/FileWalk.h"
#include "tools/Glob.h"
#include "tools/TreeSearch.h"

#include <QFile>
#include <QStringList>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

constexpr qsizetype linesReturned = 50;
constexpr qsizetype pathsReturned = 100;
/// Names for which a pattern is too slow before the search ends; each has cost a tenth of a second of work.
constexpr int mostSlowNames = 10;

QString noMatches(const QString &pattern, const QString &path)
{
    return u"No matches found for \"%1\" in %2."_s.arg(pattern, path);
}

} // namespace

QString SearchTools::grepSearch(const QString &pattern, const QString &path, const QString &include)
{
    if (pattern.isEmpty())
        return u"Error: empty search pattern."_s;
    const QByteArray root = nativePath(expandingTilde(path));
    struct stat status{};
    if (::stat(root.constData(), &status) != 0)
        return u"Error: the path \"%1\" does not exist."_s.arg(path);
    const auto search = FileSearch::compile(pattern, include);
    if (!search)
        return u"Error: invalid search pattern: "_s + search.error();

    QStringList lines;
    bool gaveUp = false;
    if (S_ISDIR(status.st_mode)) {
        TreeSearch tree(*search, root.toStdString());
        lines = tree.run(linesReturned);
        gaveUp = tree.gaveUp();
    } else {
        FileSearch::Buffer buffer;
        const FileSearch::Result result =
            search->search(root.constData(), RegularFile::Links::follow, buffer);
        lines = result.lines;
        gaveUp = result.gaveUp;
    }
    if (lines.isEmpty() && gaveUp)
        return u"Error: invalid search pattern: matching takes too long"_s;
    if (lines.isEmpty())
        return noMatches(pattern, path);
    lines = lines.first(std::min(lines.size(), linesReturned));
    if (gaveUp)
        lines.append(u"(Matching took too long in some files, so matches may be missing.)"_s);
    return lines.join(u'\n');
}

QString SearchTools::globFind(const QString &pattern, const QString &path)
{
    if (pattern.isEmpty())
        return u"Error: empty pattern."_s;
    const QByteArray root = nativePath(expandingTilde(path));
    struct stat status{};
    if (::stat(root.constData(), &status) != 0 || !S_ISDIR(status.st_mode))
        return u"Error: the path \"%1\" is not a directory."_s.arg(path);
    const auto glob = Glob::compile(pattern);
    if (!glob)
        return u"Error: invalid pattern."_s;

    QStringList paths;
    int slowNames = 0;
    FileWalk walk(root.toStdString());
    while (paths.size() < pathsReturned && slowNames < mostSlowNames && walk.next()) {
        const std::string_view relative = walk.entry().relativePath;
        switch (glob->matches(relative)) {
        case Glob::Answer::yes:
            paths.append(
                QFile::decodeName(QByteArray(relative.data(), static_cast<qsizetype>(relative.size()))));
            break;
        case Glob::Answer::no:
            break;
        case Glob::Answer::tooSlow:
            ++slowNames;
            break;
        }
    }
    if (paths.isEmpty() && slowNames > 0)
        return u"Error: invalid pattern."_s;
    if (paths.isEmpty())
        return u"No files found matching \"%1\" in %2."_s.arg(pattern, path);
    if (slowNames > 0)
        paths.append(u"(Matching took too long for some names, so paths may be missing.)"_s);
    return paths.join(u'\n');
}

} // namespace morvane
