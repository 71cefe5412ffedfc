#include "tools/TodoList.h"

using namespace Qt::StringLiterals;

namespace morvane {

QString TodoList::updateTodos(const QStringList &items)
{
    const std::lock_guard lock(m_todoLock);
    m_todos = items;
    if (m_todos.isEmpty())
        return u"Todo list cleared."_s;
    QString text = u"Todo list:"_s;
    qsizetype number = 0;
    for (const QString &item : m_todos)
        text += u'\n' + QString::number(++number) + u". "_s + item;
    return text;
}

} // namespace morvane
