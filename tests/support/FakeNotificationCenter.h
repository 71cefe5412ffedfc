#pragma once

#include "platform/NotificationCenter.h"

#include <QList>
#include <QStringList>

namespace morvane {

/// A notification centre that a test drives: it remembers what it was asked, and presents what the test says.
class FakeNotificationCenter final : public NotificationCenter {
public:
    void setDelegate(WillPresent willPresent) override
    {
        ++delegatesSet;
        delegate = std::move(willPresent);
    }
    Task<bool> requestAuthorization() override
    {
        ++authorizationsAsked;
        co_return answer;
    }
    Task<NotificationAuthorization> authorizationStatus() override { co_return status; }
    void add(const NotificationRequest &request) override { added.append(request); }
    void removePending(const QString &identifier) override { removed.append(identifier); }

    WillPresent delegate;
    QList<NotificationRequest> added;
    QStringList removed;
    NotificationAuthorization status = NotificationAuthorization::notDetermined;
    bool answer = true;
    int delegatesSet = 0;
    int authorizationsAsked = 0;
};

} // namespace morvane
