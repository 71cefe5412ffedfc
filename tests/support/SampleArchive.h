#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

namespace morvane {

/// A tar archive as honest or hostile as a test wants it.
class SampleArchive {
public:
    enum class Kind { file, folder, symbolicLink, hardLink, fifo, device };
    enum class Compression { none, gzip, zstandard };

    struct Entry {
        Kind kind = Kind::file;
        QByteArray path;
        QByteArray content; ///< Of a file; the target of a link.
        unsigned permissions = 0644;
    };

    SampleArchive &file(const QByteArray &path, const QByteArray &content, unsigned permissions = 0644);
    SampleArchive &add(Kind kind, const QByteArray &path, const QByteArray &target = {});

    /// The archive's bytes. Throws std::runtime_error if it cannot be made.
    QByteArray bytes(Compression compression = Compression::zstandard) const;

private:
    QList<Entry> m_entries;
};

/// What the runtime's own archive holds: a program, here any bytes, and a library with the link to it.
SampleArchive sampleRuntime(const QByteArray &program);

} // namespace morvane
