#include "net/NetworkThread.h"

#include <algorithm>
#include <climits>
#include <csignal>
#include <curl/curl.h>
#include <pthread.h>
#include <utility>

namespace morvane {

NetworkThread::NetworkThread(HttpClientOptions options) : m_options(std::move(options)) {}

NetworkThread::~NetworkThread()
{
    stop();
}

ResponseBody NetworkThread::start(HttpRequest request)
{
    auto channel = std::make_shared<ResponseChannel>(request.maximumLineBytes);
    Command command{Command::Kind::start, ++m_lastTransfer, nullptr};
    command.started = std::make_unique<Transfer>(command.transfer, std::move(request), channel, m_options);
    const quint64 transfer = command.transfer;
    if (!post(command))
        channel->finish(TransportError(TransportError::Kind::clientClosed));
    else if (!m_thread.joinable())
        m_thread = std::thread([this] { run(); });
    return ResponseBody(shared_from_this(), transfer, std::move(channel));
}

void NetworkThread::resume(quint64 transfer)
{
    Command command{Command::Kind::resume, transfer, nullptr};
    post(command);
}

void NetworkThread::abort(quint64 transfer)
{
    Command command{Command::Kind::abort, transfer, nullptr};
    post(command);
}

void NetworkThread::stop()
{
    {
        const std::lock_guard lock(m_mutex);
        m_stopped = true;
        if (m_wakeable)
            curl_multi_wakeup(m_wakeable);
    }
    if (m_thread.joinable())
        m_thread.join();
}

bool NetworkThread::post(Command &command)
{
    const std::lock_guard lock(m_mutex);
    if (m_stopped)
        return false;
    m_commands.push_back(std::move(command));
    if (m_commands.size() == 1 && m_wakeable)
        curl_multi_wakeup(m_wakeable);
    return true;
}

void NetworkThread::run()
{
    pthread_setname_np(pthread_self(), "network");
    // Signals are the main thread's business, and a broken pipe is an error of a write like any other.
    sigset_t signals;
    sigfillset(&signals);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);

    curl_global_init(CURL_GLOBAL_DEFAULT);
    m_multi = curl_multi_init();
    // One stream for each connection: a paused stream would hold up the others that share its connection.
    curl_multi_setopt(m_multi, CURLMOPT_PIPELINING, static_cast<long>(CURLPIPE_NOTHING));

    std::vector<Command> commands;
    while (true) {
        {
            const std::lock_guard lock(m_mutex);
            commands.swap(m_commands);
            m_wakeable = m_stopped ? nullptr : m_multi;
            if (m_stopped)
                break;
        }
        for (Command &command : commands)
            apply(std::move(command));
        commands.clear();
        int running = 0;
        curl_multi_perform(m_multi, &running);
        finishEnded();
        endSilent();
        curl_multi_poll(m_multi, nullptr, 0, pollMilliseconds(), nullptr);
    }

    for (Command &command : commands)
        if (command.started)
            command.started->fail(TransportError(TransportError::Kind::clientClosed));
    while (!m_transfers.empty()) {
        m_transfers.begin()->second->fail(TransportError(TransportError::Kind::clientClosed));
        remove(m_transfers.begin()->first);
    }
    curl_multi_cleanup(m_multi);
    curl_global_cleanup();
}

void NetworkThread::apply(Command command)
{
    if (command.kind == Command::Kind::start) {
        command.started->beginHop();
        curl_multi_add_handle(m_multi, command.started->handle());
        m_transfers.emplace(command.transfer, std::move(command.started));
        return;
    }
    const auto found = m_transfers.find(command.transfer);
    if (found == m_transfers.end())
        return;
    if (command.kind == Command::Kind::resume)
        found->second->resume();
    else
        remove(command.transfer);
}

void NetworkThread::finishEnded()
{
    int left = 0;
    while (const CURLMsg *message = curl_multi_info_read(m_multi, &left)) {
        if (message->msg != CURLMSG_DONE)
            continue;
        const CURLcode result = message->data.result;
        void *owner = nullptr;
        curl_easy_getinfo(message->easy_handle, CURLINFO_PRIVATE, &owner);
        auto *const transfer = static_cast<Transfer *>(owner);
        curl_multi_remove_handle(m_multi, transfer->handle());
        if (transfer->endHop(result) == Transfer::Next::anotherHop) {
            transfer->beginHop();
            curl_multi_add_handle(m_multi, transfer->handle());
        } else {
            m_transfers.erase(transfer->id());
        }
    }
}

void NetworkThread::endSilent()
{
    const auto now = Transfer::Clock::now();
    std::vector<quint64> silent;
    for (const auto &[id, transfer] : m_transfers)
        if (transfer->silenceDeadline() <= now)
            silent.push_back(id);
    for (const quint64 id : silent) {
        m_transfers.at(id)->fail(TransportError(TransportError::Kind::timedOut));
        remove(id);
    }
}

void NetworkThread::remove(quint64 transfer)
{
    const auto found = m_transfers.find(transfer);
    // What is left of the response would have to be read before the connection could be used again.
    curl_easy_setopt(found->second->handle(), CURLOPT_FORBID_REUSE, 1L);
    curl_multi_remove_handle(m_multi, found->second->handle());
    m_transfers.erase(found);
}

int NetworkThread::pollMilliseconds() const
{
    auto deadline = Transfer::Clock::time_point::max();
    for (const auto &[id, transfer] : m_transfers)
        deadline = std::min(deadline, transfer->silenceDeadline());
    if (deadline == Transfer::Clock::time_point::max())
        return INT_MAX;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Transfer::Clock::now()).count();
    return static_cast<int>(std::clamp<long long>(left, 0, INT_MAX));
}

} // namespace morvane
