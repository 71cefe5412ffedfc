#include "tools/FilePaths.h"

#include <QDir>
#include <QFile>
#include <pwd.h>
#include <vector>

namespace morvane {
namespace {

/// Null if there is no such user.
QString homeOfUser(const QByteArray &name)
{
    constexpr std::size_t entrySize = 16384; // what getpwnam_r of glibc suggests is far smaller
    std::vector<char> buffer(entrySize);
    passwd entry{};
    passwd *found = nullptr;
    ::getpwnam_r(name.constData(), &entry, buffer.data(), buffer.size(), &found);
    return found ? QFile::decodeName(found->pw_dir) : QString();
}

} // namespace

QString expandingTilde(const QString &path)
{
    if (!path.startsWith(u'~'))
        return path;
    const qsizetype slash = path.indexOf(u'/');
    const qsizetype nameEnd = slash < 0 ? path.size() : slash;
    const QString home =
        nameEnd == 1 ? QDir::homePath() : homeOfUser(nativePath(path.sliced(1, nameEnd - 1)));
    return home.isEmpty() ? path : home + path.sliced(nameEnd);
}

QByteArray nativePath(const QString &path)
{
    return path.contains(QChar(u'\0')) ? QByteArray() : QFile::encodeName(path);
}

} // namespace morvane
