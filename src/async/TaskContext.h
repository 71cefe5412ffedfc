#pragma once

namespace morvane {

class Cancellation;
class Scheduler;

/// What a task inherits from the one that awaits it. Both outlive the task.
struct TaskContext {
    Scheduler *scheduler = nullptr;
    Cancellation *cancellation = nullptr;
};

} // namespace morvane
