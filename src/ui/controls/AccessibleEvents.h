#pragma once

#include <QAccessible>
#include <QPointer>
#include <QWidget>

namespace morvane {

/// Decides from now on what assistive technology is told of, for the whole program. A screen reader drops
/// what the user must hear when too much comes at once, and the toolkit tells of every part of everything.
/// Left out are hidden widgets, what is shown or hidden as a part of something else, scroll bars that nobody
/// holds, a focus that is gone again, and what an AccessibleSilence keeps back. A list that takes the focus
/// is told of by its current row, what shows a document by the part of it that has the focus, and a field
/// that takes it is told of before its caret. Call it once, after the application object was made.
void installAccessibleEventFilter();

/// The widget that `element` is, or in which it lies as a row or a part; null where there is none.
QWidget *widgetOf(QAccessibleInterface *element);

/// Whether the filter lets an event through.
bool isToldToReaders(const QAccessibleEvent &event);

/// The document in which assistive technology finds the focus: the outermost one, wherever in it the focus
/// is; outside of documents what has the focus itself, and 0 where it finds nothing.
QAccessible::Id foundDocument();

/// Tells where the focus is, if it was not told yet. For a document that another one takes the place of,
/// which says nothing of it.
void tellFocusAnew();

/// While it lives, `widget` and everything in it tell assistive technology nothing, but a window still tells
/// of itself. For changes that the reader is told of in one event instead of one for each part.
class AccessibleSilence {
public:
    explicit AccessibleSilence(QWidget *widget);
    ~AccessibleSilence();
    AccessibleSilence(const AccessibleSilence &) = delete;
    AccessibleSilence &operator=(const AccessibleSilence &) = delete;

private:
    QPointer<QWidget> m_widget;
};

/// Makes `widget` and everything in it new objects to assistive technology, which keeps names and states of
/// what it knows and does not look again. Sends nothing.
void renewAccessibility(QWidget *widget);

} // namespace morvane
