#include "support/SampleArchive.h"

#include <archive.h>
#include <archive_entry.h>
#include <memory>
#include <stdexcept>
#include <sys/types.h>

namespace morvane {

namespace {

la_ssize_t appendTo(archive *, void *bytes, const void *data, std::size_t size)
{
    static_cast<QByteArray *>(bytes)->append(static_cast<const char *>(data), static_cast<qsizetype>(size));
    return static_cast<la_ssize_t>(size);
}

void require(int status, archive *writer)
{
    if (status != ARCHIVE_OK)
        throw std::runtime_error(archive_error_string(writer));
}

void describe(archive_entry *header, const SampleArchive::Entry &entry)
{
    using Kind = SampleArchive::Kind;
    archive_entry_set_pathname(header, entry.path.constData());
    archive_entry_set_perm(header, entry.permissions);
    archive_entry_set_size(header, 0);
    switch (entry.kind) {
    case Kind::file:
        archive_entry_set_filetype(header, AE_IFREG);
        archive_entry_set_size(header, entry.content.size());
        return;
    case Kind::folder:
        archive_entry_set_filetype(header, AE_IFDIR);
        archive_entry_set_perm(header, 0755);
        return;
    case Kind::symbolicLink:
        archive_entry_set_filetype(header, AE_IFLNK);
        archive_entry_set_symlink(header, entry.content.constData());
        return;
    case Kind::hardLink:
        archive_entry_set_filetype(header, AE_IFREG);
        archive_entry_set_hardlink(header, entry.content.constData());
        return;
    case Kind::fifo:
        archive_entry_set_filetype(header, AE_IFIFO);
        return;
    case Kind::device:
        archive_entry_set_filetype(header, AE_IFCHR);
        archive_entry_set_rdevmajor(header, 1);
        archive_entry_set_rdevminor(header, 3);
        return;
    }
}

} // namespace

SampleArchive &SampleArchive::file(const QByteArray &path, const QByteArray &content, unsigned permissions)
{
    m_entries.append({Kind::file, path, content, permissions});
    return *this;
}

SampleArchive &SampleArchive::add(Kind kind, const QByteArray &path, const QByteArray &target)
{
    m_entries.append({kind, path, target, 0644});
    return *this;
}

QByteArray SampleArchive::bytes(Compression compression) const
{
    QByteArray bytes;
    const std::unique_ptr<archive, int (*)(archive *)> writer(archive_write_new(), archive_write_free);
    require(archive_write_set_format_pax_restricted(writer.get()), writer.get());
    if (compression == Compression::gzip)
        require(archive_write_add_filter_gzip(writer.get()), writer.get());
    if (compression == Compression::zstandard)
        require(archive_write_add_filter_zstd(writer.get()), writer.get());
    // Padding behind the last frame is no part of what the usual programs make.
    require(archive_write_set_bytes_in_last_block(writer.get(), 1), writer.get());
    require(archive_write_open(writer.get(), &bytes, nullptr, appendTo, nullptr), writer.get());
    for (const Entry &entry : m_entries) {
        const std::unique_ptr<archive_entry, void (*)(archive_entry *)> header(archive_entry_new(),
                                                                               archive_entry_free);
        describe(header.get(), entry);
        require(archive_write_header(writer.get(), header.get()), writer.get());
        if (entry.kind == Kind::file && !entry.content.isEmpty())
            archive_write_data(writer.get(), entry.content.constData(),
                               static_cast<std::size_t>(entry.content.size()));
    }
    require(archive_write_close(writer.get()), writer.get());
    return bytes;
}

SampleArchive sampleRuntime(const QByteArray &program)
{
    SampleArchive runtime;
    runtime.add(SampleArchive::Kind::folder, "./bin/")
        .file("./bin/ollama", program, 0755)
        .file("./lib/ollama/libggml.so.1", "a library", 0644)
        .add(SampleArchive::Kind::symbolicLink, "./lib/ollama/libggml.so", "libggml.so.1");
    return runtime;
}

} // namespace morvane
