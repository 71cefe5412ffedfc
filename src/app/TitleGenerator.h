#pragma once

#include "app/TurnRunner.h"
#include "async/Task.h"
#include "model/AIConfiguration.h"

#include <QString>

namespace morvane {

/// Asks the model for a short title of a conversation. Main thread.
class TitleGenerator {
public:
    explicit TitleGenerator(TurnRunner &turns) : m_turns(turns) {}

    /// The cleaned title for a first message and its reply, or empty when none could be had or the reply
    /// cannot be trusted. Never throws. `config` names provider, model, key and base URL; the rest is
    /// the generator's own.
    Task<QString> generate(QString firstMessage, QString reply, AIConfiguration config);

private:
    TurnRunner &m_turns;
};

} // namespace morvane
