#pragma once

#include "ui/conversation/ConversationContent.h"
#include "ui/conversation/ConversationFrames.h"
#include "ui/conversation/ConversationStyle.h"
#include "ui/conversation/HeightIndex.h"
#include "ui/conversation/RowLayout.h"
#include "ui/conversation/RowSplitter.h"
#include "ui/conversation/SegmentContent.h"
#include "ui/conversation/SegmentDocuments.h"

#include <QList>
#include <QStringList>

namespace morvane {

/// Where every row and segment of the conversation stands. Only what comes near the viewport is cut into
/// segments and laid out; the rest has estimated heights. All measures are logical pixels; `y` counts from
/// the top of the first row unless said otherwise.
class ConversationLayout {
public:
    /// `content` must outlive the layout.
    explicit ConversationLayout(const ConversationContent &content)
        : m_content(content), m_texts(content, m_style), m_frames(content, m_style)
    {
    }

    void setStyle(const ConversationStyle &style);
    void setWidth(int width);
    const ConversationStyle &style() const { return m_style; }
    const ConversationContent &content() const { return m_content; }

    /// Forgets everything and takes the rows as they are now.
    void reset();
    /// Takes the rows that were added since, and drops the steps that were folded.
    void update();
    /// The text of a streaming message grew.
    void grow(const ConversationItem &item);
    /// Anything else about a row changed.
    void invalidate(const ConversationItem &item);

    int height() const;
    /// `row` may equal the number of rows.
    int top(qsizetype row) const;
    int rowHeight(const ConversationItem &item) const;
    /// The row that covers `y`, or the nearest; -1 without rows.
    qsizetype rowAt(int y) const;

    /// Cuts and lays out what stands between `top` and `bottom`, as far as the pass allows. True if any
    /// height changed by that.
    bool prepare(int top, int bottom);
    /// Starts a pass of prepare calls; documents that the last passes did not need are dropped. A pass does
    /// only so much work that it holds nobody up.
    void beginPass();
    /// Whether the pass could lay out all that it was asked for.
    bool isPassComplete() const { return m_isPassComplete; }
    /// Whether a long message in sight is being cut; until then it stands empty in the place that it is
    /// estimated to need.
    bool isWaiting() const { return m_isWaiting; }
    /// Tells when a pass can go on.
    const RowSplitter &splitter() const { return m_splitter; }
    /// What the dearest pass so far laid out, in usual letters (LayoutCost.h).
    qsizetype dearestPass() const { return m_dearestPass; }

    /// The parts of a row, cut if they were not.
    const RowLayout &row(const ConversationItem &item);
    /// The parts as far as they are known.
    const RowLayout &peek(const ConversationItem &item) const { return rowLayout(item); }
    /// The segment that covers `y`, counted from the row's top, or the nearest.
    qsizetype segmentAt(const ConversationItem &item, int y);
    /// From the row's top to the gap above a segment.
    int segmentTop(const ConversationItem &item, qsizetype segment) const;
    /// The document of a segment, laid out; made if it is not kept.
    QTextDocument &document(const ConversationItem &item, qsizetype segment);
    /// The same without any work: null if the document is not at hand.
    QTextDocument *laidOut(const ConversationItem &item, qsizetype segment) const;
    /// Where the picture of a segment is kept that is dear to draw; null for any other.
    SegmentPicture *picture(const ConversationItem &item, qsizetype segment)
    {
        return m_documents.picture(SegmentKey::of(item, rowLayout(item).segments.at(segment)));
    }
    /// What a segment shows, without formatting.
    QString plainText(const ConversationItem &item, qsizetype segment) const;
    /// What is copied between a segment and the one above it.
    QString separatorAbove(const ConversationItem &item, qsizetype segment) const;

    /// The addresses in the parts of a row that are laid out, each once, at most ten.
    QStringList links(const ConversationItem &item);

    RowFrame rowFrame(const ConversationItem &item) const { return m_frames.rowFrame(item, rowLayout(item)); }
    SegmentFrame segmentFrame(const ConversationItem &item, qsizetype segment) const
    {
        return m_frames.segmentFrame(item, rowLayout(item), segment);
    }
    /// Where one of a message's pictures stands within its row.
    QRect pictureRect(const ConversationItem &item, qsizetype index) const
    {
        return m_frames.pictureRect(item, rowLayout(item), rowHeight(item), index);
    }
    int columnLeft() const { return m_frames.columnLeft(); }
    int columnWidth() const { return m_frames.columnWidth(); }
    int timeWidth() const { return m_frames.timeWidth(); }
    bool isUser(const ConversationItem &item) const { return m_frames.isUser(item); }

    qsizetype documentCount() const { return m_documents.count(); }
    /// Bytes of the pictures that are kept of what is dear to draw.
    qsizetype pictureBytes() const { return m_documents.pictureBytes(); }

private:
    HeightIndex &heights(const ConversationItem &item);
    const HeightIndex &heights(const ConversationItem &item) const;
    RowLayout &rowLayout(const ConversationItem &item);
    const RowLayout &rowLayout(const ConversationItem &item) const;
    void split(const ConversationItem &item);
    bool splitWithoutHold(const ConversationItem &item);
    void estimate(const ConversationItem &item, qsizetype from);
    void count(qsizetype work);
    bool mayLayOut(const ConversationItem &item, qsizetype segment);
    bool prepareRow(const ConversationItem &item, int top, int bottom);
    void measure(const ConversationItem &item, qsizetype segment);
    void updateRowHeight(const ConversationItem &item);

    const ConversationContent &m_content;
    ConversationStyle m_style;
    QList<RowLayout> m_messages;
    QList<RowLayout> m_activity; ///< The header, then the steps.
    HeightIndex m_messageHeights;
    HeightIndex m_activityHeights;
    SegmentDocuments m_documents;
    SegmentContent m_texts;
    ConversationFrames m_frames;
    RowSplitter m_splitter;
    qsizetype m_passWork = 0;
    qsizetype m_dearestPass = 0;
    bool m_isPassComplete = true;
    bool m_isWaiting = false;
};

} // namespace morvane
