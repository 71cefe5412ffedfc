#pragma once

#include "ui/conversation/ConversationItem.h"
#include "ui/conversation/RowLayout.h"
#include "ui/conversation/TextSelection.h"

#include <QHash>
#include <QPixmap>
#include <QTextDocument>
#include <memory>
#include <optional>
#include <unordered_map>

namespace morvane {

/// A segment by what it shows: where it begins in which text. Its place among the row's segments changes as
/// texts above it grow.
struct SegmentKey {
    ConversationItem item;
    RowPart part = RowPart::body;
    qsizetype from = 0;

    static SegmentKey of(const ConversationItem &item, const SegmentLayout &segment)
    {
        return {.item = item, .part = segment.part, .from = segment.segment.from};
    }
    bool operator==(const SegmentKey &) const = default;
};

struct SegmentKeyHash {
    size_t operator()(const SegmentKey &key) const
    {
        return qHashMulti(0, key.item, static_cast<int>(key.part), key.from);
    }
};

/// What a segment looks like, kept where drawing it anew each time would hold the window up.
struct SegmentPicture {
    QPixmap pixmap;
    std::optional<SelectedRange> selected; ///< When it was drawn.
};

/// The laid out documents of the segments near the viewport. What was not used in the last passes goes, and
/// pictures of what is out of sight go where they take much memory.
class SegmentDocuments {
public:
    struct Entry {
        std::unique_ptr<QTextDocument> document;
        qsizetype shownLength = 0; ///< Of the text in the document; grows with a streaming segment.
        int width = 0;             ///< That the document was laid out for; 0 before that.
        quint64 lastUse = 0;
        bool isDear = false; ///< To draw, for its length.
        SegmentPicture picture;
    };

    /// The segment's document if it is kept, marked as in use.
    Entry *find(const SegmentKey &key);
    /// The same without a mark.
    const Entry *peek(const SegmentKey &key) const;
    /// Where to keep the picture of a segment that is dear to draw; null for any other.
    SegmentPicture *picture(const SegmentKey &key);
    /// Takes the place of what was kept for the segment.
    Entry &insert(const SegmentKey &key, std::unique_ptr<QTextDocument> document, qsizetype shownLength);

    void remove(const SegmentKey &key) { m_entries.erase(key); }
    void removeRow(const ConversationItem &item);
    void clear() { m_entries.clear(); }

    /// Starts a new pass over the visible segments and drops what the passes before did not use.
    void beginPass();

    /// Bytes of the pictures that are kept.
    qsizetype pictureBytes() const;
    qsizetype count() const { return static_cast<qsizetype>(m_entries.size()); }

private:
    std::unordered_map<SegmentKey, Entry, SegmentKeyHash> m_entries;
    quint64 m_pass = 0;
};

} // namespace morvane
