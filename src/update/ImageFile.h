#pragma once

#include "base/FileDescriptor.h"
#include "update/UpdateImage.h"

#include <QByteArrayView>
#include <QCryptographicHash>

namespace morvane {

/// A disk image as it arrives: a new file for the user alone, hashed while it is written. It goes away with
/// the object unless it was kept, and is locked for as long as the object lives, which tells it from what a
/// crash left. Functions answer false where the disk fails. One thread at a time; blocks.
class ImageFile {
public:
    /// Creates it in `folder`. See isOpen().
    explicit ImageFile(const QString &folder);
    ~ImageFile();
    ImageFile(const ImageFile &) = delete;
    ImageFile &operator=(const ImageFile &) = delete;

    bool isOpen() const { return m_file.isOpen(); }
    bool write(QByteArrayView bytes);
    /// Makes sure that no write failed late. The file stays until the object goes.
    bool finish();

    /// Removes it at once, whoever else still holds the object.
    void remove();

    /// The hash is that of the whole only after finish().
    const UpdateImage &image() const { return m_image; }

    /// The pattern of the names of all of them, as a regular expression.
    static QString namePattern();

private:
    UpdateImage m_image;
    FileDescriptor m_file;
    QCryptographicHash m_hash{QCryptographicHash::Sha256};
};

} // namespace morvane
