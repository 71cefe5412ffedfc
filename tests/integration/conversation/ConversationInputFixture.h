#pragma once

#include "ConversationFixture.h"

#include <QApplication>
#include <QMenu>
#include <QMouseEvent>
#include <QTest>
#include <QUrl>

namespace morvane {

/// The conversation with the keyboard on it, and a mouse.
class ConversationInputFixture : public ConversationFixture {
protected:
    ConversationInputFixture()
    {
        view.setLinkOpener([this](const QUrl &url) { opened += url.toString(); });
    }

    void showWithFocus()
    {
        show();
        view.setFocus(Qt::TabFocusReason);
        ASSERT_TRUE(QTest::qWaitFor([this] { return view.hasFocus(); }));
    }

    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(&view, key, modifiers);
    }

    QMenu *menu() const { return qobject_cast<QMenu *>(QApplication::activePopupWidget()); }

    void drag(const QPoint &to)
    {
        QMouseEvent move(QEvent::MouseMove, to, view.viewport()->mapToGlobal(to), Qt::NoButton,
                         Qt::LeftButton, {});
        QApplication::sendEvent(view.viewport(), &move);
    }

    /// A place in the middle of the first word of a row's first line.
    QPoint textOf(qsizetype row) const
    {
        const ConversationItem item = view.content().item(row);
        const RowFrame frame = view.rows().rowFrame(item);
        return {frame.left + 12, view.rowRect(row).top() + frame.top + view.rows().style().lineHeight / 2};
    }

    QStringList opened;
};

} // namespace morvane
