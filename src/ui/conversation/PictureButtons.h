#pragma once

#include "model/ChatAttachment.h"
#include "ui/conversation/ConversationItem.h"

#include <QList>
#include <QObject>
#include <optional>

class QToolButton;
class QWidget;

namespace morvane {

class ConversationLayout;
class SentPictures;

/// The small pictures of what was sent with the messages that are in sight; a press opens one. Buttons are
/// used again for other pictures as the view scrolls, and only those of the row with the keyboard can be
/// reached with Tab.
class PictureButtons : public QObject {
    Q_OBJECT
public:
    /// `host` is the view above which the buttons stand; both must outlive this.
    PictureButtons(ConversationLayout &layout, QWidget &host) : m_layout(layout), m_host(host) {}

    /// Where the pictures come from; until then there are none. Must outlive this.
    void setPictures(SentPictures &pictures);
    /// As CodeButtons::place.
    void place(int offset, int height, const std::optional<ConversationItem> &focused);

    /// The buttons in sight, from the top.
    QList<QToolButton *> visibleButtons() const { return m_buttons.first(m_shown.size()); }

Q_SIGNALS:
    void opened(const morvane::ChatAttachment &picture);

private:
    void placeRow(const ConversationItem &item, int top, int height, Qt::FocusPolicy focus);
    QToolButton *nextButton();
    void fillIcons();

    ConversationLayout &m_layout;
    QWidget &m_host;
    SentPictures *m_pictures = nullptr;
    QList<QToolButton *> m_buttons;
    QList<ChatAttachment> m_shown; ///< On the first buttons; those behind them are hidden.
};

} // namespace morvane
