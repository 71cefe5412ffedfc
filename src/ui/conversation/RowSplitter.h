#pragma once

#include "model/ChatMessage.h"
#include "ui/conversation/ConversationItem.h"
#include "ui/conversation/RowLayout.h"

#include <QFutureWatcher>
#include <QObject>
#include <optional>
#include <variant>

namespace morvane {

/// Cuts a long message into segments off the main thread, one message at a time. Main thread.
class RowSplitter : public QObject {
    Q_OBJECT
public:
    RowSplitter();

    /// Whether to cut it at once would hold the window up: beyond 200,000 UTF-16 units, of which the dearest,
    /// line ends, take 3 ms. What streams is cut where it grows, and never long.
    static bool isLong(const ChatMessage &message);

    /// Begins with a message; while it is under way and when it is done nothing more happens. Another one is
    /// given up.
    void begin(const ConversationItem &item, const ChatMessage &message);
    /// The row once it is done, which is then forgotten; its heights are not known.
    std::optional<RowLayout> take(const ConversationItem &item);
    /// The row's message is no longer what it was.
    void forget(const ConversationItem &item);
    void forgetAll();
    bool isBusy() const { return std::holds_alternative<Running>(m_phase); }

Q_SIGNALS:
    /// A row can be taken.
    void done();

private:
    struct Idle {};
    struct Running {
        ConversationItem item;
    };
    struct Done {
        ConversationItem item;
        RowLayout row;
    };

    bool isFor(const ConversationItem &item) const;
    void finish();

    std::variant<Idle, Running, Done> m_phase;
    QFutureWatcher<RowLayout> m_work; ///< Of the running one.
};

} // namespace morvane
