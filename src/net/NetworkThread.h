#pragma once

#include "net/HttpClientOptions.h"
#include "net/HttpRequest.h"
#include "net/ResponseBody.h"
#include "net/Transfer.h"

#include <QtGlobal>
#include <memory>
#include <mutex>
#include <thread>
#include <unordered_map>
#include <vector>

namespace morvane {

/// The thread on which all transfers run, with libcurl's multi interface. It starts with the first transfer
/// and sleeps while nothing moves. The public functions: main thread.
class NetworkThread : public std::enable_shared_from_this<NetworkThread> {
public:
    explicit NetworkThread(HttpClientOptions options);
    ~NetworkThread();
    NetworkThread(const NetworkThread &) = delete;
    NetworkThread &operator=(const NetworkThread &) = delete;

    /// Begins a transfer. After stop() it fails at once.
    ResponseBody start(HttpRequest request);
    /// Goes on with a transfer that paused because its channel was full.
    void resume(quint64 transfer);
    /// Ends a transfer and closes its connection.
    void abort(quint64 transfer);

    /// Ends every transfer with TransportError::ClientClosed and joins the thread. Nothing starts afterwards.
    void stop();

private:
    struct Command {
        enum class Kind { start, resume, abort };
        Kind kind;
        quint64 transfer;
        std::unique_ptr<Transfer> started;
    };

    /// False, with the command untouched, after stop().
    bool post(Command &command);

    /// @name Network thread
    ///@{
    void run();
    void apply(Command command);
    void finishEnded();
    void endSilent();
    void remove(quint64 transfer);
    int pollMilliseconds() const;
    ///@}

    HttpClientOptions m_options;
    quint64 m_lastTransfer = 0;
    std::thread m_thread;

    std::mutex m_mutex; ///< Guards the three below.
    std::vector<Command> m_commands;
    bool m_stopped = false;
    void *m_wakeable = nullptr; ///< The multi handle while it can be woken.

    void *m_multi = nullptr; ///< Network thread, as the one below.
    std::unordered_map<quint64, std::unique_ptr<Transfer>> m_transfers;
};

} // namespace morvane
