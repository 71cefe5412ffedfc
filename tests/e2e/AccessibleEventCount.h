#pragma once

#include "support/MorvaneSession.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

namespace morvane {

/// Everything that the program tells assistive technology, counted as a reader receives it.
class AccessibleEventCount : public QObject {
public:
    explicit AccessibleEventCount(MorvaneSession &morvane)
        : m_bus(morvane.desktop().sessionBusAddress()),
          m_program(m_bus.application(morvane.program().process().pid()))
    {
        connect(&m_bus, &AccessibilityBus::eventReceived, this, [this](const QDBusMessage &event) {
            if (event.service() == m_program.service())
                m_events.append(event.member() + QLatin1Char(' ') + event.arguments().value(0).toString());
        });
        for (const auto *kind : {"object:", "focus:", "window:"})
            m_bus.registerEvent(QString::fromLatin1(kind));
        // The program hears of the new listener a moment later.
        const AccessibleElement field = morvane.program().find(QStringLiteral("Message Morvane"));
        EXPECT_TRUE(waitUntil([&] {
            field.setText(m_events.isEmpty() ? QString::number(++m_tries) : QString());
            return !m_events.isEmpty();
        }));
    }

    void begin()
    {
        // What was told before has arrived when an answer has.
        m_program.name();
        m_events.clear();
    }
    QStringList sinceBegin()
    {
        m_program.name();
        return m_events;
    }

private:
    AccessibilityBus m_bus;
    AccessibleElement m_program;
    QStringList m_events;
    int m_tries = 0;
};

} // namespace morvane
