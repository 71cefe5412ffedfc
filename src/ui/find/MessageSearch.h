#pragma once

#include "model/ChatMessage.h"
#include "ui/conversation/FoundText.h"

#include <QList>
#include <QString>
#include <atomic>
#include <vector>

namespace morvane {

/// Every place at which words stand in the messages as they are shown, whatever the case of their letters.
/// Kept by segments, so that a letter which stands there a million times costs no more than the text does.
class MessageSearch {
public:
    /// Reads all messages, unless `isStopped` becomes true; then the result is of no use. Any thread.
    static MessageSearch run(const QList<ChatMessage> &messages, const QString &words,
                             const std::atomic<bool> &isStopped);

    /// How many there are.
    qsizetype count() const { return m_count; }
    /// One of them, in the order in which they are read; `index` is less than count().
    FoundText at(qsizetype index) const;
    /// The first in this message or behind it; the very first if there is none. Only with a count.
    qsizetype firstFrom(qsizetype message) const;
    /// Which one it is, or -1.
    qsizetype indexOf(const FoundText &found) const;

private:
    struct Segment {
        FoundText first;
        int count = 0;
        qsizetype before = 0; ///< Those in the segments above.
    };

    void addMessage(qsizetype index, const ChatMessage &message, const QString &words,
                    const std::atomic<bool> &isStopped);
    void add(const FoundText &first, int count);

    std::vector<Segment> m_segments;
    qsizetype m_count = 0;
};

} // namespace morvane
