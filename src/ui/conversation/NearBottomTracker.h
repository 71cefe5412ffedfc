#pragma once

#include <QtGlobal>

namespace morvane {

/// Where the conversation is scrolled to, in logical pixels.
struct ChatScrollMetrics {
    double offset = 0;
    double viewportHeight = 0;
};

/// Decides whether the conversation follows its newest text. A small slip does not unlock the view, but the
/// user must come close to the end to lock it again.
class NearBottomTracker {
public:
    bool isNearBottom() const { return m_isNearBottom; }

    /// To be called on every change of the metrics that the user made.
    void updateNearBottom(double contentHeight, const ChatScrollMetrics &metrics);

    /// Whether a change at `now` (milliseconds of a steady clock) may scroll to the bottom; if so, notes it.
    bool mayScroll(qint64 now);

    /// Milliseconds from `now` until mayScroll can be true again.
    qint64 pause(qint64 now) const;

    /// Follows again, as after the user sent a message or opened a conversation.
    void lock() { m_isNearBottom = true; }

private:
    bool m_isNearBottom = true;
    qint64 m_lastScroll = -1;
};

} // namespace morvane
