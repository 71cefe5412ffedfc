#pragma once

#include <QAbstractScrollArea>
#include <QAccessible>
#include <QPointer>
#include <QWindow>

namespace morvane {

/// What the rows of a scrolling View have in common for assistive technology: each is one element without
/// parts, and goes with its view.
template <class View> class RowAccessible : public QAccessibleInterface, public QAccessibleActionInterface {
public:
    QObject *object() const final { return nullptr; }
    QWindow *window() const final { return m_view ? m_view->window()->windowHandle() : nullptr; }
    QAccessibleInterface *parent() const final
    {
        return m_view ? QAccessible::queryAccessibleInterface(m_view) : nullptr;
    }
    QAccessibleInterface *child(int) const final { return nullptr; }
    QAccessibleInterface *childAt(int, int) const final { return nullptr; }
    int childCount() const final { return 0; }
    int indexOfChild(const QAccessibleInterface *) const final { return -1; }
    void setText(QAccessible::Text, const QString &) final {}
    QStringList keyBindingsForAction(const QString &) const final { return {}; }

protected:
    explicit RowAccessible(View *view) : m_view(view) {}

    /// Null when the view has gone, which a reader may outlast.
    View *view() const { return m_view; }
    /// A place in the view's viewport on the screen.
    QRect onScreen(const QRect &place) const
    {
        return {m_view->viewport()->mapToGlobal(place.topLeft()), place.size()};
    }
    bool isOffscreen(const QRect &place) const { return !place.intersects(m_view->viewport()->rect()); }

private:
    QPointer<View> m_view;
};

} // namespace morvane
