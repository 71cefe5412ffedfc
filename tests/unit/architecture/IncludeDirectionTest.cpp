#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <string>

using namespace Qt::StringLiterals;

namespace {

using Folders = std::set<std::string>;

/// Which folders the files of a folder may include, besides their own. The arrows of docs/architecture.md.
const std::map<std::string, Folders> allowed = {
    {"base", {}},
    {"async", {"base"}},
    {"net", {"base", "async"}},
    {"model", {"base"}},
    {"platform", {"base", "async", "model"}},
    {"platform/linux", {"base", "async", "model", "platform"}},
    {"store", {"base", "async", "model", "platform"}},
    {"providers", {"base", "async", "net", "model", "platform"}},
    {"tools", {"base", "async", "net", "model", "platform"}},
    {"reminder", {"base", "async", "model", "platform", "platform/linux", "tools"}},
    {"localmodel", {"base", "async", "net", "model", "platform"}},
    {"attachments", {"base", "async", "model"}},
    {"attachments/reader", {"base", "attachments"}},
    {"app",
     {"base", "async", "net", "model", "platform", "store", "providers", "tools", "localmodel",
      "attachments"}},
    {"ui",
     {"base", "async", "net", "model", "platform", "store", "providers", "tools", "localmodel", "attachments",
      "app"}},
};

/// Libraries that only the folders with windows may include.
const Folders windowFolders = {"ui", "platform/linux"};

/// Subfolders belong to the room that they lie in, but for these.
std::string folderOf(const QString &path)
{
    for (const char *own : {"platform/linux", "attachments/reader"})
        if (path.startsWith(QLatin1String(own) + u'/'))
            return own;
    return path.section(u'/', 0, 0).toStdString();
}

struct Include {
    std::string file;
    std::string folder;
    QString target;
    bool quoted = false;
};

std::vector<Include> includesOfSources()
{
    const QString root = QStringLiteral(MORVANE_SOURCE_DIR "/src/");
    static const QRegularExpression line(QStringLiteral(R"(^\s*#\s*include\s*(["<])([^">]+)[">])"),
                                         QRegularExpression::MultilineOption);
    std::vector<Include> includes;
    QDirIterator files(root, {u"*.h"_s, u"*.cpp"_s}, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        const QString path = file.fileName().mid(root.size());
        auto matches = line.globalMatch(QString::fromUtf8(file.readAll()));
        while (matches.hasNext()) {
            const auto match = matches.next();
            includes.push_back(
                {path.toStdString(), folderOf(path), match.captured(2), match.captured(1) == "\""_L1});
        }
    }
    return includes;
}

TEST(IncludeDirectionTest, FoldersIncludeOnlyWhatLiesBelowThem)
{
    const auto includes = includesOfSources();
    ASSERT_GT(includes.size(), 100u);
    for (const Include &include : includes) {
        if (!include.quoted || include.file == "main.cpp")
            continue;
        const auto rule = allowed.find(include.folder);
        ASSERT_NE(rule, allowed.end()) << include.file << ": the folder has no rule";
        const std::string target = folderOf(include.target);
        EXPECT_TRUE(target == include.folder || rule->second.contains(target))
            << include.file << " includes " << include.target.toStdString();
    }
}

TEST(IncludeDirectionTest, OnlyFoldersWithWindowsIncludeWidgets)
{
    static const QRegularExpression widget(
        u"^(QtWidgets|QtWebEngine|QWidget|QApplication|QLabel|QMainWindow|QAbstract.*View|"
        "QMenu|QPushButton|QDialog|QAccessible|QScreen|QWindow|QPainter|QGuiApplication)"_s);
    for (const Include &include : includesOfSources()) {
        if (windowFolders.contains(include.folder) || include.file == "main.cpp")
            continue;
        EXPECT_FALSE(widget.match(include.target).hasMatch())
            << include.file << " includes " << include.target.toStdString();
    }
}

TEST(IncludeDirectionTest, FilesKeepToTheirSize)
{
    QDirIterator files(QStringLiteral(MORVANE_SOURCE_DIR "/src/"), {u"*.h"_s, u"*.cpp"_s}, QDir::Files,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const auto lines = file.readAll().count('\n');
        EXPECT_LE(lines, file.fileName().endsWith(".h"_L1) ? 160 : 400) << file.fileName().toStdString();
    }
}

} // namespace
