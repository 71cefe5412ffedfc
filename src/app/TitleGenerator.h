#pragma once

#include "app/TurnRunner.h"
#include "async/Task.h"
#include "model/AIConfiguration.h"

#include <QString>
#include <QUuid>
#include <optional>

namespace morvane {

class RequestConfiguration;
class Scheduler;
struct Workspace;

/// Asks the model for a short title of the current conversation, in the background and once for each. Main
/// thread.
class TitleGenerator {
public:
    /// All of them outlive the object; the scheduler is shut down before it goes.
    TitleGenerator(Scheduler &scheduler, TurnRunner &turns, Workspace &workspace,
                   const RequestConfiguration &configuration);

    /// Asks, unless it has asked for this conversation. A title that arrives when another conversation is the
    /// current one is dropped; any failure is silent. Only between requests.
    void maybeGenerateConversationTitle();
    /// A new conversation begins.
    void forget() { m_titleGeneratedFor.reset(); }

private:
    Task<void> generateTitle(QUuid id, QString firstMessage, QString reply, AIConfiguration config);
    Task<QString> askForTitle(QString firstMessage, QString reply, AIConfiguration config);

    Scheduler &m_scheduler;
    TurnRunner &m_turns;
    Workspace &m_workspace;
    const RequestConfiguration &m_configuration;
    std::optional<QUuid> m_titleGeneratedFor;
};

} // namespace morvane
