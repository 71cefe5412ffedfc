#pragma once

#include "async/RootTask.h"

#include <memory>
#include <utility>

namespace morvane {

/// Refers to a spawned task. Copies refer to the same one. Main thread.
template <class T> class TaskHandle {
public:
    explicit TaskHandle(std::shared_ptr<RootTask<T>> root) : m_root(std::move(root)) {}

    /// Asks the task to stop; it notices at its next suspension.
    void cancel() { m_root->cancellation().cancel(); }
    bool done() const { return m_root->outcome().isSet(); }

    /// The result, moved out, or the exception, thrown. Only when done().
    T result() { return m_root->outcome().take(); }

private:
    std::shared_ptr<RootTask<T>> m_root;
};

} // namespace morvane
