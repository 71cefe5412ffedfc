#include "update/ImageFile.h"

#include "base/Uuid.h"
#include "base/WriteWhole.h"

#include <QFile>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr unsigned forTheUserAlone = 0600;

} // namespace

ImageFile::ImageFile(const QString &folder)
{
    m_image.path = folder + u"/Morvane-%1.tar.zst"_s.arg(uuidText(newUuid()));
    m_file = FileDescriptor(::open(QFile::encodeName(m_image.path).constData(),
                                   O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, forTheUserAlone));
    if (m_file.isOpen())
        ::flock(m_file.get(), LOCK_EX | LOCK_NB); // nobody else knows the name
}

ImageFile::~ImageFile()
{
    remove();
}

bool ImageFile::write(QByteArrayView bytes)
{
    m_hash.addData(bytes);
    return writeWhole(m_file.get(), bytes);
}

bool ImageFile::finish()
{
    m_image.sha256 = m_hash.result().toHex();
    // Closing would end the lock; some file systems tell of a full disk only here.
    return ::fsync(m_file.get()) == 0;
}

void ImageFile::remove()
{
    if (!m_file.isOpen())
        return;
    ::unlink(QFile::encodeName(m_image.path).constData());
    m_file.close();
}

QString ImageFile::namePattern()
{
    return u"Morvane-[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}\\.tar\\.zst"_s;
}

} // namespace morvane
