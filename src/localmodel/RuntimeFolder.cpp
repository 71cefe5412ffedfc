#include "localmodel/RuntimeFolder.h"

#include "archive/UnpackArchive.h"
#include "base/FileDescriptor.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUuid>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr auto treeName = "ollama-runtime"_L1;
constexpr auto remainsPrefix = "ollama-install-"_L1;

/// The runtime unpacked is some 4 GB in a few hundred files.
constexpr qint64 maximumBytes = 20'000'000'000;
constexpr qint64 maximumEntries = 20'000;

using Result = std::expected<void, UnpackError>;

std::filesystem::path systemPath(const QString &path)
{
    return QFile::encodeName(path).toStdString();
}

Result diskFailure()
{
    const int error = errno;
    const auto kind =
        error == ENOSPC || error == EDQUOT ? UnpackError::Kind::diskFull : UnpackError::Kind::disk;
    return std::unexpected(UnpackError{kind, QString::fromLocal8Bit(::strerror(error))});
}

/// Removes a folder with all that is in it at its end; follows no link.
class TemporaryTree {
public:
    explicit TemporaryTree(QString path) : m_path(std::move(path)) {}
    ~TemporaryTree()
    {
        std::error_code ignored; // what is left is removed by the next installation
        std::filesystem::remove_all(systemPath(m_path), ignored);
    }
    TemporaryTree(const TemporaryTree &) = delete;
    TemporaryTree &operator=(const TemporaryTree &) = delete;

    const QString &path() const { return m_path; }

private:
    QString m_path;
};

/// Brings all that was written to the volume of a folder to the disk.
bool syncVolume(const QString &folder)
{
    const FileDescriptor file(
        ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return file.isOpen() && ::syncfs(file.get()) == 0;
}

} // namespace

void RuntimeFolder::removeRemains() const
{
    const QStringList names = QDir(m_dataFolder).entryList({remainsPrefix + u'*'}, QDir::Dirs | QDir::Hidden);
    for (const QString &name : names)
        const TemporaryTree remains(m_dataFolder + u'/' + name);
}

Result RuntimeFolder::install(const QString &archive, std::shared_ptr<const std::atomic<bool>> stop) const
{
    const TemporaryTree unpacked(m_dataFolder + u'/' + remainsPrefix +
                                 QUuid::createUuid().toString(QUuid::WithoutBraces));
    if (!QDir().mkpath(unpacked.path()))
        return diskFailure();
    const Result result =
        unpackArchive({archive, unpacked.path(), maximumBytes, maximumEntries, std::move(stop)});
    if (!result)
        return result;
    const QFileInfo program(unpacked.path() + u"/bin/ollama"_s);
    if (!program.isFile() || program.isSymLink() || !program.isExecutable())
        return std::unexpected(UnpackError{UnpackError::Kind::damaged, u"the program is not in it"_s});
    return place(unpacked.path());
}

Result RuntimeFolder::place(const QString &unpacked) const
{
    // Half an installation must not count as one after a power failure either.
    if (!syncVolume(unpacked))
        return diskFailure();
    const QByteArray from = QFile::encodeName(unpacked);
    const QByteArray tree = QFile::encodeName(m_dataFolder + u'/' + treeName);
    // An older tree goes where the new one was, and away with it.
    const bool exchanged =
        ::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, tree.constData(), RENAME_EXCHANGE) == 0;
    if (!exchanged && std::rename(from.constData(), tree.constData()) != 0)
        return diskFailure();

    const QByteArray target = QByteArray(treeName.data(), treeName.size()) + "/bin/ollama";
    const QByteArray link = tree + "-link";
    ::unlink(link.constData());
    if (::symlink(target.constData(), link.constData()) != 0 ||
        std::rename(link.constData(), QFile::encodeName(program()).constData()) != 0) {
        const Result failure = diskFailure();
        ::unlink(link.constData());
        return failure;
    }
    syncVolume(m_dataFolder);
    return {};
}

} // namespace morvane
