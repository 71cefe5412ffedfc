#pragma once

#include <QEvent>
#include <QObject>

namespace morvane {

/// Counts the events of one kind that come to what it is installed on.
class EventCount : public QObject {
public:
    explicit EventCount(QEvent::Type type) : m_type(type) {}

    int count = 0;

private:
    bool eventFilter(QObject *, QEvent *event) override
    {
        count += event->type() == m_type;
        return false;
    }

    const QEvent::Type m_type;
};

} // namespace morvane
