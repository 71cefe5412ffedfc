#include "platform/linux/desktop/XDisplay.h"

#include "platform/DisplaySilent.h"

#include <QDeadlineTimer>
#include <QtGlobal>
#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <poll.h>
#include <sys/socket.h>
#include <thread>
#include <utility>
#include <xcb/randr.h>
#include <xcb/xcbext.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// In units of 32 bits; titles and lists of windows are far smaller.
constexpr uint32_t longestProperty = 1 << 16;

/// What a stop leaves the server for each answer: whoever has stopped has keys to let go of.
constexpr std::chrono::milliseconds stopPatience{500};

/// Waits for another thread as long as for an answer.
template <class Condition>
bool isInTime(std::condition_variable_any &told, std::unique_lock<std::mutex> &lock,
              const std::stop_token &stop, std::chrono::milliseconds patience, const Condition &condition)
{
    return told.wait_for(lock, stop, patience, condition) ||
           (stop.stop_requested() && told.wait_for(lock, stopPatience, condition));
}

/// A connection on its way, shared with the thread that waits for it.
struct Connecting {
    std::mutex mutex;
    std::condition_variable_any isDone;
    xcb_connection_t *connection = nullptr;
    int preferredScreen = 0;
    bool isGivenUp = false;
};

void connect(const std::shared_ptr<Connecting> &shared)
{
    int preferred = 0;
    xcb_connection_t *const connection = xcb_connect(nullptr, &preferred);
    const std::lock_guard lock(shared->mutex);
    if (shared->isGivenUp) {
        xcb_disconnect(connection);
        return;
    }
    shared->connection = connection;
    shared->preferredScreen = preferred;
    shared->isDone.notify_all();
}

/// Closed early it may not have read all that it was told, such as to let go of a key.
void closeOnceAnswered(xcb_connection_t *connection)
{
    std::free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
    xcb_disconnect(connection);
}

} // namespace

std::unique_ptr<XDisplay> XDisplay::open(std::stop_token stop, std::chrono::milliseconds patience)
{
    if (!qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        return nullptr;
    const auto shared = std::make_shared<Connecting>();
    std::thread(connect, shared).detach();
    std::unique_lock lock(shared->mutex);
    if (!isInTime(shared->isDone, lock, stop, patience, [&] { return shared->connection != nullptr; })) {
        shared->isGivenUp = true;
        throw DisplaySilent();
    }
    xcb_connection_t *const connection = shared->connection;
    int preferred = shared->preferredScreen;
    if (xcb_connection_has_error(connection) != 0) {
        xcb_disconnect(connection);
        return nullptr;
    }
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; preferred > 0 && screens.rem > 1; --preferred)
        xcb_screen_next(&screens);
    return std::unique_ptr<XDisplay>(new XDisplay(connection, screens.data, std::move(stop), patience));
}

XDisplay::XDisplay(xcb_connection_t *connection, const xcb_screen_t *screen, std::stop_token stop,
                   std::chrono::milliseconds patience)
    : m_connection(connection), m_screen(screen), m_stop(std::move(stop)), m_patience(patience)
{
}

XDisplay::~XDisplay()
{
    if (m_isSilent && xcb_connection_has_error(m_connection) == 0)
        std::thread(closeOnceAnswered, m_connection).detach();
    else
        xcb_disconnect(m_connection);
}

void *XDisplay::waitForReply(unsigned int sequence) const
{
    if (m_isSilent)
        throw DisplaySilent();
    xcb_flush(m_connection);
    void *reply = nullptr;
    xcb_generic_error_t *error = nullptr;
    const QDeadlineTimer deadline(m_patience);
    bool isLastLook = false;
    while (xcb_poll_for_reply(m_connection, sequence, &reply, &error) == 0) {
        if (isLastLook) {
            m_isSilent = true;
            xcb_discard_reply(m_connection, sequence);
            throw DisplaySilent();
        }
        pollfd answer{xcb_get_file_descriptor(m_connection), POLLIN, 0};
        const auto limit = std::min<qint64>(deadline.remainingTime(), stopPatience.count());
        const bool isAny = ::poll(&answer, 1, int(limit)) != 0;
        // It may have come while this thread was held up.
        isLastLook = deadline.hasExpired() || (!isAny && m_stop.stop_requested());
    }
    std::free(error);
    return reply;
}

void XDisplay::attend(const std::function<void()> &work) const
{
    std::mutex mutex;
    std::condition_variable_any isOver;
    bool isDone = false;
    std::jthread worker([&] {
        work();
        const std::lock_guard lock(mutex);
        isDone = true;
        isOver.notify_all();
    });
    std::unique_lock lock(mutex);
    if (isInTime(isOver, lock, m_stop, m_patience, [&] { return isDone; }))
        return;
    m_isSilent = true;
    // All that waits for it ends with the connection.
    ::shutdown(xcb_get_file_descriptor(m_connection), SHUT_RDWR);
    lock.unlock();
    worker.join();
    throw DisplaySilent();
}

bool XDisplay::hasExtension(xcb_extension_t *extension) const
{
    xcb_prefetch_extension_data(m_connection, extension);
    synchronize();
    const xcb_query_extension_reply_t *const reply = xcb_get_extension_data(m_connection, extension);
    return reply && reply->present;
}

xcb_atom_t XDisplay::atom(std::string_view name) const
{
    const auto cookie = xcb_intern_atom(m_connection, 0, uint16_t(name.size()), name.data());
    const auto reply = this->reply<xcb_intern_atom_reply_t>(cookie);
    return reply ? reply->atom : XCB_ATOM_NONE;
}

QList<uint32_t> XDisplay::values(xcb_window_t window, std::string_view name) const
{
    const auto cookie =
        xcb_get_property(m_connection, 0, window, atom(name), XCB_ATOM_ANY, 0, longestProperty);
    const auto reply = this->reply<xcb_get_property_reply_t>(cookie);
    if (!reply || reply->format != 32)
        return {};
    const auto *values = static_cast<const uint32_t *>(xcb_get_property_value(reply.get()));
    return QList<uint32_t>(values, values + reply->value_len);
}

QByteArray XDisplay::bytes(xcb_window_t window, std::string_view name) const
{
    const auto cookie =
        xcb_get_property(m_connection, 0, window, atom(name), XCB_ATOM_ANY, 0, longestProperty);
    const auto reply = this->reply<xcb_get_property_reply_t>(cookie);
    if (!reply || reply->format != 8)
        return {};
    return QByteArray(static_cast<const char *>(xcb_get_property_value(reply.get())), reply->value_len);
}

bool XDisplay::exists(xcb_window_t window) const
{
    return reply<xcb_get_window_attributes_reply_t>(xcb_get_window_attributes(m_connection, window)) !=
           nullptr;
}

QRect XDisplay::geometry(xcb_window_t window) const
{
    const auto size = xcb_get_geometry(m_connection, window);
    const auto place = xcb_translate_coordinates(m_connection, window, root(), 0, 0);
    const auto sizeReply = reply<xcb_get_geometry_reply_t>(size);
    const auto placeReply = reply<xcb_translate_coordinates_reply_t>(place);
    if (!sizeReply || !placeReply)
        return {};
    return {placeReply->dst_x, placeReply->dst_y, sizeReply->width, sizeReply->height};
}

QList<QRect> XDisplay::monitors() const
{
    QList<QRect> frames;
    if (hasExtension(&xcb_randr_id)) {
        const auto version =
            reply<xcb_randr_query_version_reply_t>(xcb_randr_query_version(m_connection, 1, 5));
        const bool knowsMonitors = version && (version->major_version > 1 || version->minor_version >= 5);
        const auto reply =
            knowsMonitors
                ? this->reply<xcb_randr_get_monitors_reply_t>(xcb_randr_get_monitors(m_connection, root(), 1))
                : nullptr;
        auto monitor = reply ? xcb_randr_get_monitors_monitors_iterator(reply.get())
                             : xcb_randr_monitor_info_iterator_t{};
        for (; monitor.rem > 0; xcb_randr_monitor_info_next(&monitor)) {
            const QRect frame(monitor.data->x, monitor.data->y, monitor.data->width, monitor.data->height);
            // Mirrored outputs are one place to look at.
            if (!frame.isEmpty() && !frames.contains(frame))
                frames.insert(monitor.data->primary ? 0 : frames.size(), frame);
        }
    }
    if (frames.isEmpty())
        frames.append(QRect(0, 0, m_screen->width_in_pixels, m_screen->height_in_pixels));
    return frames;
}

QPoint XDisplay::origin() const
{
    return monitors().first().topLeft();
}

void XDisplay::sendToWindowManager(std::string_view message, xcb_window_t window,
                                   const QList<uint32_t> &data) const
{
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = atom(message);
    std::copy_n(data.cbegin(), std::min<qsizetype>(data.size(), 5), event.data.data32);
    xcb_send_event(m_connection, 0, root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char *>(&event));
    xcb_flush(m_connection);
}

void XDisplay::synchronize() const
{
    reply<xcb_get_input_focus_reply_t>(xcb_get_input_focus(m_connection));
}

} // namespace morvane
