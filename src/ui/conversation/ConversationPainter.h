#pragma once

#include "ui/conversation/ConversationLayout.h"
#include "ui/conversation/TextSelection.h"

#include <QPainter>
#include <QPalette>
#include <QRect>

namespace morvane {

/// Draws the part of the conversation that is in sight.
class ConversationPainter {
public:
    struct State {
        int offset = 0;          ///< Scrolled to, in the layout's coordinates.
        qsizetype focusRow = -1; ///< The row with the keyboard focus.
    };

    /// All must outlive the painter. The layout must have been prepared for what is drawn.
    ConversationPainter(ConversationLayout &layout, const TextSelection &selection, const QPalette &palette)
        : m_layout(layout), m_selection(selection), m_palette(palette)
    {
    }

    void paint(QPainter &painter, const QRect &exposed, const State &state);

private:
    void paintRow(QPainter &painter, const ConversationItem &item, int top, const QRect &exposed);
    void paintGround(QPainter &painter, const ConversationItem &item, int top) const;
    void paintSegments(QPainter &painter, const ConversationItem &item, int top, const QRect &exposed);
    void paintCodeGround(QPainter &painter, const ConversationItem &item, qsizetype segment, int top) const;
    void paintDocument(QPainter &painter, QTextDocument &document, const std::optional<SelectedRange> &range,
                       const QPoint &origin, const QRect &exposed) const;
    QColor groundOf(const ConversationItem &item, const SegmentLayout &segment) const;
    void paintPicture(QPainter &painter, QTextDocument &document, SegmentPicture &picture,
                      const std::optional<SelectedRange> &range, const QPoint &origin,
                      const QColor &ground) const;
    void paintFoldMark(QPainter &painter, const QPoint &at, int side) const;
    void paintActivity(QPainter &painter, const ConversationItem &item, int top) const;
    const ConversationStyle &style() const { return m_layout.style(); }

    ConversationLayout &m_layout;
    const TextSelection &m_selection;
    const QPalette &m_palette;
};

} // namespace morvane
