#pragma once

#include <QAccessible>
#include <QObject>
#include <QTimer>
#include <functional>

namespace morvane {

/// Knows when screen readers find the document that takes the place of another under the keyboard: the engine
/// hands it over some time after it has shown it, and says nothing. Main thread.
class ComingDocument : public QObject {
    Q_OBJECT
public:
    /// `hasKeyboard` says whether a reader's user is in the document.
    explicit ComingDocument(std::function<bool()> hasKeyboard, QObject *parent = nullptr);

    /// Another document takes the place of the one that is shown; what readers find is the old one still.
    void replaced();
    /// It is there whole, or nothing came in its place.
    void loaded();
    /// What is shown now is another page's.
    void forget();

Q_SIGNALS:
    /// Readers find the document, and the user is in it.
    void found();

private:
    void look();

    const std::function<bool()> m_hasKeyboard;
    QTimer m_looking;
    int m_looks = 0;
    QAccessible::Id m_before = 0; ///< What was found of the old document; 0 where nothing took its place.
};

} // namespace morvane
