#include "browser/history/RecordsFile.h"

#include "base/AtomicFile.h"
#include "base/RegularFile.h"
#include "browser/history/Log.h"

#include <QFile>
#include <QFileInfo>
#include <cerrno>
#include <unistd.h>
#include <utility>

namespace morvane {

namespace {

std::optional<QByteArray> contentOf(const QString &path)
{
    auto file = RegularFile::open(QFile::encodeName(path).constData());
    if (!file)
        return std::nullopt;
    file->makePrivate();
    auto content = file->readUpTo(RecordsFile::maximumBytes);
    if (!content || content->size() > RecordsFile::maximumBytes)
        return std::nullopt;
    return *std::move(content);
}

} // namespace

RecordsFile::RecordsFile(const QString &path) : m_path(path)
{
    m_disk.setMaxThreadCount(1);
    m_disk.start([folder = QFileInfo(path).path()] {
        if (const auto isThere = ensurePrivateFolder(folder); !isThere)
            qCWarning(browserHistoryLog) << "no folder for the records:" << isThere.error();
        removeAbandonedTemporaryFiles(folder);
    });
}

RecordsFile::~RecordsFile()
{
    finish();
}

void RecordsFile::read(std::function<void(std::optional<QByteArray>)> take)
{
    m_disk.start([this, take = std::move(take)] { take(contentOf(m_path)); });
}

void RecordsFile::write(std::function<QByteArray()> content)
{
    const std::lock_guard lock(m_lock);
    if (m_waiting) {
        *m_waiting = std::move(content);
        return;
    }
    m_waiting = std::make_shared<Content>(std::move(content));
    m_disk.start([this, waiting = m_waiting] { writeWaiting(waiting); });
}

void RecordsFile::remove()
{
    {
        // What comes now is written behind the removal.
        const std::lock_guard lock(m_lock);
        if (const auto waiting = std::exchange(m_waiting, nullptr))
            *waiting = {};
    }
    m_disk.start([this] {
        if (::unlink(QFile::encodeName(m_path).constData()) != 0 && errno != ENOENT)
            qCWarning(browserHistoryLog) << "records were not removed:" << systemReason(errno);
    });
}

void RecordsFile::finish()
{
    m_disk.waitForDone();
}

void RecordsFile::writeWaiting(const std::shared_ptr<Content> &waiting)
{
    Content content;
    {
        const std::lock_guard lock(m_lock);
        content = std::exchange(*waiting, {});
        if (m_waiting == waiting)
            m_waiting.reset();
    }
    if (!content) // it was removed meanwhile
        return;
    if (const auto written = writeFileAtomically(m_path, content()); !written)
        qCWarning(browserHistoryLog) << "records were not written:" << written.error();
}

} // namespace morvane
