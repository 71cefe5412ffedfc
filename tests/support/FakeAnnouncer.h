#pragma once

#include "platform/Announcer.h"

#include <QStringList>

namespace morvane {

/// Remembers what was spoken.
class FakeAnnouncer final : public Announcer {
public:
    void announce(const QString &text) override { spoken.append(text); }

    QStringList spoken;
};

} // namespace morvane
