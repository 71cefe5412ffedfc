#pragma once

#include "support/RawHttpServer.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <cstdlib>
#include <vector>

namespace morvane {

constexpr qint64 megabyte = 1024 * 1024;

inline bool execute(const QString &program, const QStringList &arguments)
{
    return QProcess::execute(program, arguments) == 0;
}

/// Bytes that shrink to some two thirds, as programs do, and where the beginning repeats every 64 megabytes.
inline void writeLibrary(const QString &path, qint64 megabytes)
{
    constexpr qint64 repeated = 64;
    constexpr qint64 different = 7;
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        std::exit(EXIT_FAILURE);
    std::vector<quint64> words(megabyte / sizeof(quint64));
    QRandomGenerator random(11);
    for (qint64 number = 0; number < megabytes; ++number) {
        if (number % repeated == 0)
            random.seed(11);
        random.generate(words.begin(), words.end());
        for (quint64 &word : words)
            word &= 0x3f3f'3f3f'3f3f'3f3f;
        file.write(reinterpret_cast<const char *>(words.data()), megabyte);
        if (number % repeated == different)
            random.seed(static_cast<quint32>(number));
    }
}

/// Makes the archive of a runtime in `folder`, with the window of the real one, and gives its path. `program`
/// is what is installed as the runtime's own. Needs tar and zstd.
inline QString makeRuntimeArchive(const QString &folder, const QByteArray &program, qint64 megabytes)
{
    const QString tree = folder + QStringLiteral("/tree");
    QDir().mkpath(tree + QStringLiteral("/bin"));
    QDir().mkpath(tree + QStringLiteral("/lib/ollama"));
    QFile file(tree + QStringLiteral("/bin/ollama"));
    if (!file.open(QIODevice::WriteOnly) || file.write(program) < 0 ||
        !file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner))
        std::exit(EXIT_FAILURE);
    file.close();
    writeLibrary(tree + QStringLiteral("/lib/ollama/library.so"), megabytes);
    QString archive = folder + QStringLiteral("/archive.tar.zst");
    if (!execute(QStringLiteral("tar"),
                 {QStringLiteral("-C"), tree, QStringLiteral("-I"), QStringLiteral("zstd -q -1 --long=27"),
                  QStringLiteral("-cf"), archive, QStringLiteral(".")}))
        std::exit(EXIT_FAILURE);
    execute(QStringLiteral("rm"), {QStringLiteral("-rf"), tree});
    return archive;
}

/// Answers a request with a file; false where that cannot be done.
inline bool sendFile(RawHttpConnection &connection, const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) ||
        !connection.send(
            rawHttpHead(200, {{"Content-Length", QByteArray::number(file.size())}, {"ETag", "\"1\""}})))
        return false;
    while (!file.atEnd())
        if (!connection.send(file.read(megabyte)))
            return false;
    return true;
}

/// Answers each request with a file.
inline void serveFile(RawHttpConnection &connection, const QString &path)
{
    while (connection.readRequest())
        if (!sendFile(connection, path))
            return;
}

} // namespace morvane
