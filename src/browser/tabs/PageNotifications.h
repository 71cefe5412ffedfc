#pragma once

namespace morvane {

class NotificationCenter;
struct PageNotification;

/// Hands what pages let the user know to the desktop. A site has one banner, whatever it says and in however
/// many tabs, so that it cannot cover the desktop: its next takes the place of its last. Main thread.
class PageNotifications {
public:
    /// The centre outlives it.
    explicit PageNotifications(NotificationCenter &center) : m_center(center) {}

    void show(const PageNotification &notification);

private:
    NotificationCenter &m_center;
};

} // namespace morvane
