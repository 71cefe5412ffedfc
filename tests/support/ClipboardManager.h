#pragma once

#include "support/ClipboardOwner.h"
#include "support/XConnection.h"

#include <QByteArray>
#include <QString>
#include <atomic>
#include <memory>
#include <thread>

namespace morvane {

/// The program of a desktop that keeps the clipboard's text when its owner ends: it is asked to by the owner
/// (target SAVE_TARGETS), fetches the text, and owns the clipboard from then on.
class ClipboardManager {
public:
    explicit ClipboardManager(const QString &display);

    /// Whether it has been asked to keep something, and has it.
    bool hasSaved() const { return m_hasSaved; }

private:
    using Event = std::unique_ptr<xcb_generic_event_t, decltype(&std::free)>;

    void serve(const std::stop_token &stop);
    Event next(const std::stop_token &stop) const;
    QByteArray fetch(const std::stop_token &stop) const;
    QByteArray takeProperty(xcb_atom_t &type) const;

    const QString m_display;
    XConnection m_connection;
    xcb_window_t m_window = 0;
    std::atomic<bool> m_hasSaved = false;
    std::unique_ptr<ClipboardOwner> m_owner;
    std::jthread m_thread;
};

} // namespace morvane
