#pragma once

#include "ui/conversation/CodeButtons.h"
#include "ui/conversation/PictureButtons.h"

namespace morvane {

/// What can be pressed within the rows that are in sight: the pictures, and the "Copy" of code blocks.
class RowButtons {
public:
    /// As CodeButtons.
    RowButtons(ConversationLayout &layout, Announcer &announcer, QWidget &host)
        : m_code(layout, announcer, host), m_pictures(layout, host)
    {
    }

    void place(int offset, int height, const std::optional<ConversationItem> &focused)
    {
        m_code.place(offset, height, focused);
        m_pictures.place(offset, height, focused);
    }
    PictureButtons &pictures() { return m_pictures; }
    QList<QToolButton *> code() const { return m_code.visibleButtons(); }
    QList<QToolButton *> all() const { return m_pictures.visibleButtons() + m_code.visibleButtons(); }

private:
    CodeButtons m_code;
    PictureButtons m_pictures;
};

} // namespace morvane
