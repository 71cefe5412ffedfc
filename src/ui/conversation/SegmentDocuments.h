#pragma once

#include "ui/conversation/ConversationItem.h"

#include <QHash>
#include <QTextDocument>
#include <memory>
#include <unordered_map>

namespace morvane {

/// A segment of a row.
struct SegmentKey {
    ConversationItem item;
    qsizetype segment = 0;

    bool operator==(const SegmentKey &) const = default;
};

struct SegmentKeyHash {
    size_t operator()(const SegmentKey &key) const { return qHashMulti(0, key.item, key.segment); }
};

/// The laid out documents of the segments near the viewport. What was not used in the last passes goes.
class SegmentDocuments {
public:
    struct Entry {
        std::unique_ptr<QTextDocument> document;
        qsizetype shownLength = 0; ///< Of the source text in the document; grows with a streaming segment.
        int width = 0;             ///< That the document was laid out for.
        quint64 lastUse = 0;
    };

    /// The segment's document if it is kept, marked as in use.
    Entry *find(const SegmentKey &key);
    /// The same without a mark.
    const QTextDocument *peek(const SegmentKey &key) const;
    Entry &insert(const SegmentKey &key, std::unique_ptr<QTextDocument> document);

    void remove(const SegmentKey &key) { m_entries.erase(key); }
    void removeRow(const ConversationItem &item);
    void clear() { m_entries.clear(); }

    /// Starts a new pass over the visible segments and drops what the passes before did not use.
    void beginPass();

    qsizetype count() const { return static_cast<qsizetype>(m_entries.size()); }

private:
    std::unordered_map<SegmentKey, Entry, SegmentKeyHash> m_entries;
    quint64 m_pass = 0;
};

} // namespace morvane
