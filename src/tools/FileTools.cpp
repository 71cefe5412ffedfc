#include "tools/FileTools.h"

#include "base/AtomicFile.h"
#include "base/RegularFile.h"
#include "base/Text.h"
#include "tools/FilePaths.h"
#include "tools/NewFileMode.h"

#include <QFile>
#include <QStringList>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

constexpr std::size_t listedEntries = 199; // 200 lines with the heading
constexpr qint64 readableBytes = 2'000'000;
constexpr qsizetype readableCharacters = 8'000;
constexpr qint64 editableBytes = 100'000'000;

std::optional<struct stat> statusOf(const QByteArray &path)
{
    struct stat status{};
    if (::stat(path.constData(), &status) != 0)
        return std::nullopt;
    return status;
}

/// An entry of a folder and what it is sorted by: its name in the canonical form, as UTF-8, whose order of
/// bytes is the order of Unicode scalars.
struct FolderEntry {
    std::string key;
    std::string name;

    auto operator<=>(const FolderEntry &) const = default;
};

FolderEntry folderEntry(const char *name)
{
    const QByteArrayView bytes(name);
    const bool isAscii = std::all_of(bytes.begin(), bytes.end(), [](char c) { return (c & 0x80) == 0; });
    if (isAscii)
        return {name, name};
    return {QFile::decodeName(name).normalized(QString::NormalizationForm_C).toStdString(), name};
}

/// The least `listedEntries` entries in order, or the system's reason.
std::expected<std::vector<FolderEntry>, QString> leastEntries(const QByteArray &path)
{
    const std::unique_ptr<DIR, int (*)(DIR *)> folder(::opendir(path.constData()), &::closedir);
    if (!folder)
        return std::unexpected(systemReason(errno));
    std::vector<FolderEntry> least; // a heap with the greatest in front, so that huge folders cost no memory
    while (true) {
        errno = 0;
        const dirent *const read = ::readdir(folder.get());
        if (!read)
            break;
        if (std::strcmp(read->d_name, ".") == 0 || std::strcmp(read->d_name, "..") == 0)
            continue;
        FolderEntry entry = folderEntry(read->d_name);
        if (least.size() == listedEntries) {
            if (entry >= least.front())
                continue;
            std::pop_heap(least.begin(), least.end());
            least.pop_back();
        }
        least.push_back(std::move(entry));
        std::push_heap(least.begin(), least.end());
    }
    if (errno != 0)
        return std::unexpected(systemReason(errno));
    std::sort_heap(least.begin(), least.end());
    return least;
}

bool isFolder(const QByteArray &path)
{
    const auto status = statusOf(path);
    return status && S_ISDIR(status->st_mode);
}

QString readingFailed(const QString &path, const QString &reason)
{
    return u"Error reading "_s + path + u": "_s + reason;
}

QString tooLarge(const QString &path, qint64 size)
{
    return u"The file \"%1\" is %2 bytes, which is too large to read in full. Use "
           u"run_shell_command with a tool like `sed` or `grep` to inspect it."_s.arg(path,
                                                                                      QString::number(size));
}

/// Makes the folder of a file and what is missing above it. Fails with the system's reason.
std::expected<void, QString> ensureFolderOf(const QByteArray &path)
{
    const qsizetype slash = path.lastIndexOf('/');
    if (slash <= 0 || isFolder(path.first(slash)))
        return {};
    for (qsizetype end = path.indexOf('/', 1); end > 0; end = path.indexOf('/', end + 1)) {
        const QByteArray folder = path.first(end);
        if (::mkdir(folder.constData(), 0777) != 0 && errno != EEXIST && !isFolder(folder))
            return std::unexpected(systemReason(errno));
    }
    return {};
}

/// Replaces or creates a file. A link is replaced by the file itself: what it leads to is not what the user
/// allowed to be changed. Refuses what is not a regular file and what the user may not write, although a
/// rename could replace both. Fails with the system's reason.
std::expected<void, QString> replaceFile(const QString &path, QByteArrayView bytes)
{
    const QByteArray native = nativePath(path);
    if (native.isEmpty())
        return std::unexpected(systemReason(ENOENT));
    const auto status = statusOf(native);
    if (isLink(native.constData())) {
        const bool hasMode = status && S_ISREG(status->st_mode);
        return writeFileAtomically(path, bytes, Durability::powerLoss,
                                   hasMode ? status->st_mode & 0777 : newFileMode());
    }
    if (!status)
        return writeFileAtomically(path, bytes, Durability::powerLoss, newFileMode());
    if (S_ISDIR(status->st_mode))
        return std::unexpected(systemReason(EISDIR));
    if (!S_ISREG(status->st_mode))
        return std::unexpected(u"Not a regular file"_s);
    if (::faccessat(AT_FDCWD, native.constData(), W_OK, AT_EACCESS) != 0)
        return std::unexpected(systemReason(errno));
    return writeFileAtomically(path, bytes, Durability::powerLoss, status->st_mode & 0777);
}

std::expected<QByteArray, QString> readForEditing(const QString &path)
{
    auto file = RegularFile::open(nativePath(path).constData());
    if (!file)
        return std::unexpected(file.error());
    auto bytes = file->readUpTo(editableBytes);
    if (bytes && bytes->size() > editableBytes)
        return std::unexpected(systemReason(EFBIG));
    if (bytes && !bytes->isValidUtf8())
        return std::unexpected(u"The text is not valid UTF-8"_s);
    return bytes;
}

qsizetype countOf(QByteArrayView needle, QByteArrayView bytes)
{
    qsizetype count = 0;
    for (qsizetype at = bytes.indexOf(needle); at >= 0; at = bytes.indexOf(needle, at + needle.size()))
        ++count;
    return count;
}

QByteArray replaced(QByteArrayView bytes, QByteArrayView needle, QByteArrayView replacement, qsizetype count)
{
    QByteArray result;
    result.reserve(bytes.size() + count * (replacement.size() - needle.size()));
    qsizetype copied = 0;
    for (qsizetype at = bytes.indexOf(needle); at >= 0; at = bytes.indexOf(needle, copied)) {
        result += bytes.sliced(copied, at - copied);
        result += replacement;
        copied = at + needle.size();
    }
    result += bytes.sliced(copied);
    return result;
}

} // namespace

QString FileTools::listDirectory(const QString &path)
{
    const QString expanded = expandingTilde(path);
    const QByteArray native = nativePath(expanded);
    const auto status = statusOf(native);
    if (!status)
        return u"Error: the path \"%1\" does not exist."_s.arg(path);
    if (!S_ISDIR(status->st_mode))
        return u"Error: \"%1\" is not a folder."_s.arg(path);
    const auto entries = leastEntries(native);
    if (!entries)
        return u"Error listing "_s + path + u": "_s + entries.error();
    if (entries->empty())
        return u"The folder \"%1\" is empty."_s.arg(path);
    QStringList lines{u"Contents of "_s + expanded + u':'};
    for (const FolderEntry &entry : *entries) {
        const QString name = QFile::decodeName(entry.name.c_str());
        lines.append(isFolder(native + '/' + entry.name.c_str()) ? name + u'/' : name);
    }
    return lines.join(u'\n');
}

QString FileTools::readFile(const QString &path)
{
    const QByteArray native = nativePath(expandingTilde(path));
    const auto status = statusOf(native);
    if (!status)
        return u"Error: the file \"%1\" does not exist."_s.arg(path);
    if (S_ISDIR(status->st_mode))
        return u"Error: \"%1\" is a folder, not a file."_s.arg(path);
    auto file = RegularFile::open(native.constData());
    if (!file)
        return readingFailed(path, file.error());
    if (file->size() > readableBytes)
        return tooLarge(path, file->size());
    const auto bytes = file->readUpTo(readableBytes);
    if (!bytes)
        return readingFailed(path, bytes.error());
    if (bytes->size() > readableBytes)
        return tooLarge(path, bytes->size());
    if (!bytes->isValidUtf8())
        return readingFailed(path, u"The text is not valid UTF-8"_s);
    if (bytes->contains('\0'))
        return u"The file \"%1\" appears to be binary and was not read."_s.arg(path);

    QString text = trimmed(QString::fromUtf8(*bytes));
    if (text.isEmpty())
        return u"The file \"%1\" is empty."_s.arg(path);
    const qsizetype shown = characterOffset(text, readableCharacters);
    if (shown < text.size())
        return text.first(shown) + u"\n… (file is larger, only the first part was shown)"_s;
    return text;
}

QString FileTools::writeFile(const QString &path, const QString &content)
{
    const QString expanded = expandingTilde(path);
    auto written = ensureFolderOf(nativePath(expanded));
    if (written)
        written = replaceFile(expanded, content.toUtf8());
    if (!written)
        return u"Error writing "_s + expanded + u": "_s + written.error();
    return u"Wrote %1 characters to %2."_s.arg(QString::number(characterCount(content)), expanded);
}

QString FileTools::editFile(const QString &path, const QString &oldString, const QString &newString,
                            Occurrences occurrences)
{
    if (oldString.isEmpty())
        return u"Error: the text to find cannot be empty."_s;
    const QString expanded = expandingTilde(path);
    const auto failed = [&expanded](const QString &reason) {
        return u"Error editing "_s + expanded + u": "_s + reason;
    };
    if (!statusOf(nativePath(expanded)))
        return u"Error: the file \"%1\" does not exist."_s.arg(path);
    const auto bytes = readForEditing(expanded);
    if (!bytes)
        return failed(bytes.error());

    const QByteArray needle = oldString.toUtf8();
    const QByteArray replacement = newString.toUtf8();
    const qsizetype count = countOf(needle, *bytes);
    if (count == 0)
        return u"Error: the text to replace was not found in \"%1\". Include more surrounding "
               u"context from the file."_s.arg(path);
    if (count > 1 && occurrences == Occurrences::single)
        return u"Error: the text to replace appears %1 times in \"%2\". Include more surrounding "
               u"lines to make it unique, or set replace all to true."_s.arg(QString::number(count), path);
    if (replacement.size() > needle.size() &&
        count > (editableBytes - bytes->size()) / (replacement.size() - needle.size()))
        return failed(systemReason(EFBIG));

    const auto written = replaceFile(expanded, replaced(*bytes, needle, replacement, count));
    if (!written)
        return failed(written.error());
    return u"Edited %1: replaced %2 occurrence(s)."_s.arg(path, QString::number(count));
}

} // namespace morvane
