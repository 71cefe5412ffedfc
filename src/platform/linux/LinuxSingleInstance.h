#pragma once

#include "base/FileDescriptor.h"
#include "platform/SingleInstance.h"

#include <QString>
#include <chrono>
#include <memory>
#include <vector>

class QSocketNotifier;

namespace morvane {

/// An advisory lock decides, so that a crash leaves nothing behind and of two simultaneous starts one wins;
/// a local socket beside it carries the activation. Both lie in a folder that only the user can enter.
class LinuxSingleInstance : public SingleInstance {
public:
    /// `folder` is created (0700) if it is missing. Where it cannot be used every process is the first.
    /// A later start waits up to `answerTime` for an instance that is itself starting, ending or busy.
    explicit LinuxSingleInstance(const QString &folder,
                                 std::chrono::milliseconds answerTime = std::chrono::seconds(5));
    ~LinuxSingleInstance() override;

    Claim claim(const ActivationToken &token) override;
    void listen(std::function<void(const ActivationToken &)> onActivation) override;

private:
    struct Client;

    void openSocket();
    void acceptClients();
    void readFrom(Client *client);

    const std::chrono::milliseconds m_answerTime;
    FileDescriptor m_folder;
    FileDescriptor m_lock;
    FileDescriptor m_socket;
    std::unique_ptr<QSocketNotifier> m_notifier;
    std::vector<std::unique_ptr<Client>> m_clients;
    std::function<void(const ActivationToken &)> m_onActivation;
};

} // namespace morvane
