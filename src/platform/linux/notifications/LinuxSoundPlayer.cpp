#include "platform/linux/notifications/LinuxSoundPlayer.h"

#include "platform/Log.h"

#include <QByteArrayList>
#include <QFile>
#include <canberra.h>
#include <condition_variable>
#include <deque>
#include <dlfcn.h>
#include <link.h>
#include <mutex>
#include <optional>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

using namespace std::chrono_literals;

/// More at once is noise, and a server that hangs lets them pile up.
constexpr int maximumSounds = 4;
constexpr auto endLimit = 300ms;

int collectDriver(dl_phdr_info *object, size_t, void *paths)
{
    const QByteArray path(object->dlpi_name);
    if (path.contains("/libcanberra-") && path.endsWith(".so"))
        static_cast<QByteArrayList *>(paths)->append(path);
    return 0;
}

/// Keeps the library's loaded drivers in memory. Destroying the context unloads its driver, in which the
/// thread of a sound that has just ended may still have to return.
void keepDriversLoaded()
{
    QByteArrayList paths;
    ::dl_iterate_phdr(&collectDriver, &paths);
    for (const QByteArray &path : paths)
        if (void *const driver = ::dlopen(path.constData(), RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE))
            ::dlclose(driver);
}

} // namespace

/// The thread's half; it goes when both halves have let go.
class LinuxSoundPlayer::Worker {
public:
    void give(const QByteArray &file)
    {
        const std::lock_guard lock(m_lock);
        if (m_sounds == maximumSounds)
            return;
        ++m_sounds;
        m_files.push_back(file);
        m_changed.notify_all();
    }

    void waitUntilHeard(std::chrono::milliseconds limit)
    {
        std::unique_lock lock(m_lock);
        m_changed.wait_for(lock, limit, [this] { return m_sounds == 0; });
    }

    /// Asks the thread to end; whether it did within `limit`.
    bool end(std::chrono::milliseconds limit)
    {
        std::unique_lock lock(m_lock);
        m_ends = true;
        m_changed.notify_all();
        return m_changed.wait_for(lock, limit, [this] { return m_hasEnded; });
    }

    void run()
    {
        while (const auto file = next())
            start(*file);
        dropContext();
        const std::lock_guard lock(m_lock);
        m_hasEnded = true;
        m_changed.notify_all();
    }

private:
    std::optional<QByteArray> next()
    {
        std::unique_lock lock(m_lock);
        m_changed.wait(lock, [this] { return m_ends || !m_files.empty(); });
        if (m_ends)
            return std::nullopt;
        QByteArray file = m_files.front();
        m_files.pop_front();
        return file;
    }

    void start(const QByteArray &file)
    {
        if (!m_context && ca_context_create(&m_context) == CA_SUCCESS)
            ca_context_change_props(m_context, CA_PROP_APPLICATION_NAME, "Morvane", CA_PROP_APPLICATION_ID,
                                    "morvane", CA_PROP_APPLICATION_ICON_NAME, "morvane", nullptr);
        ca_proplist *properties = nullptr;
        if (!m_context || ca_proplist_create(&properties) != CA_SUCCESS) {
            qCWarning(platformLog) << "there is no means to play a sound";
            soundEnded();
            return;
        }
        ca_proplist_sets(properties, CA_PROP_MEDIA_FILENAME, file.constData());
        ca_proplist_sets(properties, CA_PROP_MEDIA_NAME, "Morvane");
        ca_proplist_sets(properties, CA_PROP_MEDIA_ROLE, "event");
        const int status = ca_context_play_full(m_context, m_nextId++, properties, &Worker::finished, this);
        ca_proplist_destroy(properties);
        if (status == CA_SUCCESS) {
            if (!std::exchange(m_isDriverKept, true))
                keepDriversLoaded();
        } else {
            qCInfo(platformLog) << "a sound was not played:" << ca_strerror(status);
            soundEnded();
            dropContext(); // The next sound finds a server that was started or restarted meanwhile.
        }
    }

    void dropContext()
    {
        if (m_context)
            ca_context_destroy(m_context);
        m_context = nullptr;
        m_isDriverKept = false;
    }

    /// Called on a thread of the library's, or by ca_context_destroy.
    static void finished(ca_context *, uint32_t, int, void *worker)
    {
        static_cast<Worker *>(worker)->soundEnded();
    }

    void soundEnded()
    {
        const std::lock_guard lock(m_lock);
        --m_sounds;
        m_changed.notify_all();
    }

    std::mutex m_lock;
    std::condition_variable m_changed;
    std::deque<QByteArray> m_files;
    int m_sounds = 0; ///< Given and not yet at their end.
    bool m_ends = false;
    bool m_hasEnded = false;
    ca_context *m_context = nullptr; ///< This and the next two: the thread's alone.
    bool m_isDriverKept = false;
    uint32_t m_nextId = 1;
};

LinuxSoundPlayer::LinuxSoundPlayer(QString folder) : m_folder(std::move(folder)) {}

LinuxSoundPlayer::~LinuxSoundPlayer()
{
    if (!m_thread.joinable())
        return;
    if (m_worker->end(endLimit))
        m_thread.join();
    else
        m_thread.detach();
}

void LinuxSoundPlayer::play(const QString &name)
{
    const QString file = m_folder + u'/' + name + u".wav"_s;
    if (!m_worker) {
        m_worker = std::make_shared<Worker>();
        m_thread = std::thread([worker = m_worker] { worker->run(); });
    }
    m_worker->give(QFile::encodeName(file));
}

void LinuxSoundPlayer::waitUntilHeard(std::chrono::milliseconds limit) const
{
    if (m_worker)
        m_worker->waitUntilHeard(limit);
}

} // namespace morvane
