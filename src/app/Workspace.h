#pragma once

#include "app/ActivityLog.h"
#include "app/AppServices.h"
#include "app/ApprovalGate.h"
#include "app/Questions.h"
#include "app/Status.h"
#include "app/Transcript.h"

namespace morvane {

/// What a running request works on and narrates through: the observable parts of the open conversation.
struct Workspace {
    explicit Workspace(const AppServices &services)
        : status(services.announcer, services.settings), gate(services.settings),
          questions(services.announcer)
    {
    }

    Transcript transcript;
    ActivityLog activity;
    Status status;
    ApprovalGate gate;
    Questions questions;
};

} // namespace morvane
