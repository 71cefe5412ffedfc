#pragma once

#include "app/ActivityLog.h"
#include "app/ApprovalGate.h"
#include "app/Conversations.h"
#include "app/Questions.h"
#include "app/Status.h"
#include "app/Transcript.h"
#include "model/APIMessage.h"

#include <QList>

namespace morvane {

/// What a running request works on and narrates through: the current conversation and its observable parts.
struct Workspace {
    Workspace(Scheduler &scheduler, ConversationStore &store, SettingsStore &settings, Announcer &announcer)
        : conversations(scheduler, store, settings), status(announcer, settings), gate(settings),
          questions(announcer)
    {
    }

    Conversations conversations;
    Transcript transcript;
    /// What the model gets of the conversation, between requests.
    QList<APIMessage> context;
    ActivityLog activity;
    Status status;
    ApprovalGate gate;
    Questions questions;
};

} // namespace morvane
