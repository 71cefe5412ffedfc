#pragma once

#include <QString>
#include <QStringList>
#include <mutex>

namespace morvane {

/// The list of tasks that a model keeps for itself. It lives as long as the program and is seen only by the
/// models, in what each call answers; the agent and its subagents share one. Any thread.
class TodoList {
public:
    /// Replaces the whole list and answers how it reads now.
    QString updateTodos(const QStringList &items);

private:
    std::mutex m_todoLock;
    QStringList m_todos; ///< Guarded by m_todoLock.
};

} // namespace morvane
