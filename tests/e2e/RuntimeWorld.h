#pragma once

#include "support/DownloadServer.h"
#include "support/MorvaneSession.h"
#include "support/RuntimeState.h"

namespace morvane {

/// All of the outside that the program on loopback sees of the local model: the site of the runtime, and what
/// the runtime does once it is here. It answers chats with "Good morning to you.".
class RuntimeWorld {
public:
    /// The first bytes of a download that is held.
    static constexpr qint64 heldBytes = 2'000'000;

    /// For a session that is not started yet, and outlives the world only when it has ended its program.
    explicit RuntimeWorld(MorvaneSession &morvane);

    /// The runtime can be downloaded.
    void offerRuntime();
    /// The user has the runtime's program, and these models, one in a line.
    void haveProgram(const QByteArray &models);
    /// The program goes to a site where nothing answers.
    void cutTheNetwork();
    /// The first bytes of the next download come, and nothing more.
    void holdDownload();
    /// From where the last request for the runtime wanted to go on; 0 for its beginning.
    qint64 lastRangeStart() const;

    DownloadServer site;
    RuntimeState runtime;

private:
    MorvaneSession &m_morvane;
};

} // namespace morvane
