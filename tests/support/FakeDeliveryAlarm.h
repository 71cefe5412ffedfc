#pragma once

#include "platform/linux/notifications/DeliveryAlarm.h"

#include <QList>
#include <QMap>

namespace morvane {

/// Remembers which alarms are set.
class FakeDeliveryAlarm final : public DeliveryAlarm {
public:
    void set(QUuid id, double date) override { alarms.insert(id, date); }
    void clear(QUuid id) override
    {
        alarms.remove(id);
        cleared.append(id);
    }

    QMap<QUuid, double> alarms;
    QList<QUuid> cleared;
};

} // namespace morvane
