#pragma once

#include "ui/conversation/ConversationItem.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <optional>

class QToolButton;
class QWidget;

namespace morvane {

class Announcer;
class ConversationLayout;

/// The "Copy" buttons of the code blocks that are in sight. Buttons are used again for other blocks as the
/// view scrolls. Only those of the row with the keyboard focus can be reached with Tab, so that a
/// conversation full of code is one stop on the way through the window.
class CodeButtons : public QObject {
    Q_OBJECT
public:
    /// `host` is the view above which the buttons stand; all must outlive this.
    CodeButtons(ConversationLayout &layout, Announcer &announcer, QWidget &host);

    /// Puts a button on every code block between `offset` and `offset + height`, whose row's top lies in the
    /// host at the layout's place minus `offset`.
    void place(int offset, int height, const std::optional<ConversationItem> &focused);

    /// The buttons in sight, from the top.
    QList<QToolButton *> visibleButtons() const;

private:
    struct Place {
        ConversationItem item;
        qsizetype segment = 0;
        bool operator==(const Place &) const = default;
    };

    QToolButton *makeButton();
    void copy(qsizetype button);

    ConversationLayout &m_layout;
    Announcer &m_announcer;
    QWidget &m_host;
    QList<QToolButton *> m_buttons;
    QList<Place> m_places; ///< Of the first buttons; those behind them are hidden.
};

} // namespace morvane
