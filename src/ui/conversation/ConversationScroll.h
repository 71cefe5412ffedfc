#pragma once

#include "ui/conversation/NearBottomTracker.h"
#include "ui/conversation/ReadingAnchor.h"
#include "ui/conversation/ScrollAnchor.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <QVariantAnimation>

class QAbstractScrollArea;

namespace morvane {

class ConversationLayout;
struct TextPlace;

/// Where the conversation is scrolled to. It lays out what is in sight, keeps the line that the user reads in
/// its place while heights change, and follows the newest text until the user scrolls away from it.
class ConversationScroll : public QObject {
    Q_OBJECT
public:
    /// Works the vertical bar of `area`; both must outlive this.
    ConversationScroll(ConversationLayout &layout, QAbstractScrollArea &area);

    int offset() const { return m_offset; }
    bool isNearBottom() const { return m_tracker.isNearBottom(); }
    /// Whether no scrolling is under way or waits for its time.
    bool isSettled() const;

    /// The conversation was replaced: the next frame shows its end.
    void openAtBottom();
    /// Lays out the next frame after changes, and follows the newest text.
    void showFrame();
    /// The viewport has another size.
    void takeSize();
    /// The bar moved; nothing happens if that was not the user's doing.
    void takeBar();
    /// Moves the bar as the user would.
    void scrollBy(int pixels);
    /// A page down (1) or up (-1), as the user would.
    void scrollPage(int direction);
    /// To the newest text, which is followed from there on.
    void scrollToEnd();
    /// Brings a row into sight.
    void show(const ConversationItem &item);
    /// Brings a line of the text into sight.
    void show(const TextPlace &place);

Q_SIGNALS:
    /// What stands in the viewport, or where, may have changed.
    void moved();
    /// The newest text came into sight or left it.
    void nearBottomChanged(bool isNear);
    /// Not all that is in sight could be laid out in this frame.
    void isUnfinished();

private:
    enum class Keep { anchor, bottom };
    enum class Travel { atOnce, animated };

    int viewHeight() const;
    int maximumOffset() const;
    void relayout(Keep keep);
    void setOffset(int offset);
    void scrollToBottom(Travel travel);
    void advance(const QVariant &progress);
    void stopForUser();
    void noteUserPlace();
    void follow();

    ConversationLayout &m_layout;
    QAbstractScrollArea &m_area;
    ReadingAnchor m_reading;
    NearBottomTracker m_tracker;
    ScrollAnchor m_anchor;
    Keep m_keep = Keep::bottom; ///< What the next frame holds on to.
    int m_offset = 0;
    bool m_isAdjusting = false; ///< The scroll bar moves because of us, not of the user.
    QTimer m_followTimer;
    QElapsedTimer m_clock;
    QVariantAnimation m_scrolling;
    int m_scrollStart = 0;
};

} // namespace morvane
