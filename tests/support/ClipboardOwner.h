#pragma once

#include "support/XConnection.h"

#include <QByteArray>
#include <QMap>
#include <QString>
#include <atomic>
#include <thread>

namespace morvane {

/// Another program that has put something on the clipboard, as long as the object lives.
class ClipboardOwner {
public:
    enum class Manner {
        whole,
        drips, ///< Sends a content byte by byte, and begins anew when it is at its end.
        pours, ///< Sends a content again and again.
    };

    /// `contents` by target, such as "text/uri-list"; each less than what fits into one request, 16 MB.
    ClipboardOwner(const QString &display, QMap<QByteArray, QByteArray> contents,
                   Manner manner = Manner::whole);

    /// How many bytes dripped, or contents poured, so far.
    int dripped() const { return m_dripped; }

private:
    void serve(const std::stop_token &stop);
    void answer(const xcb_selection_request_event_t &request);
    void drip(const xcb_property_notify_event_t &change);

    XConnection m_connection;
    QMap<QByteArray, QByteArray> m_contents;
    const Manner m_manner;
    xcb_window_t m_window = 0;
    QByteArray m_dripping;
    xcb_selection_request_event_t m_request{}; ///< That it drips for.
    std::atomic<int> m_dripped = 0;
    std::jthread m_thread;
};

/// A list of files as file managers put it on the clipboard.
QByteArray uriList(const QStringList &paths);

} // namespace morvane
