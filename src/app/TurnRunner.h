#pragma once

#include "async/Clock.h"
#include "async/Task.h"
#include "model/AIConfiguration.h"
#include "model/APIMessage.h"
#include "providers/AIService.h"

#include <QList>

namespace morvane {

/// Asks the model for one turn, with a watchdog that ends a turn in which no text arrives for too long.
/// Used by the main loop, subagents and titles. Main thread.
class TurnRunner {
public:
    /// `service` must outlive the runner and every turn.
    explicit TurnRunner(AIService &service) : m_service(service) {}

    /// Throws AIServiceError, TransportError or Cancelled.
    Task<AITurnResult> runTurn(QList<APIMessage> context, AIConfiguration config,
                               AIService::TokenCallback onToken);

private:
    AIService &m_service;
};

} // namespace morvane
