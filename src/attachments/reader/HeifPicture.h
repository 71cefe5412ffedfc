#pragma once

#include <QByteArray>
#include <QImage>
#include <QSize>
#include <memory>

struct heif_context;
struct heif_image_handle;

namespace morvane {

/// The main picture of a file in the container that telephones write (HEIC, AVIF). The bytes must outlive the
/// object.
class HeifPicture {
public:
    static bool isHeif(const QByteArray &bytes);

    explicit HeifPicture(const QByteArray &bytes);
    ~HeifPicture();
    HeifPicture(const HeifPicture &) = delete;
    HeifPicture &operator=(const HeifPicture &) = delete;

    /// As it is to be seen, turned as the file says; empty if the file cannot be read.
    QSize size() const;

    /// Turned; with the colours that the file names. Null if it is damaged.
    QImage decode() const;

private:
    heif_context *m_context;
    heif_image_handle *m_handle = nullptr;
};

} // namespace morvane
