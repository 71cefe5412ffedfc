#pragma once

#include "support/XConnection.h"

#include <QByteArray>
#include <QMap>
#include <QString>
#include <thread>

namespace morvane {

/// Another program that has put something on the clipboard, as long as the object lives.
class ClipboardOwner {
public:
    /// `contents` by target, such as "text/uri-list"; each less than what fits into one request, 16 MB.
    ClipboardOwner(const QString &display, QMap<QByteArray, QByteArray> contents);

private:
    void serve(const std::stop_token &stop);
    void answer(const xcb_selection_request_event_t &request);

    XConnection m_connection;
    QMap<QByteArray, QByteArray> m_contents;
    xcb_window_t m_window = 0;
    std::jthread m_thread;
};

/// A list of files as file managers put it on the clipboard.
QByteArray uriList(const QStringList &paths);

} // namespace morvane
