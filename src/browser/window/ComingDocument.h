#pragma once

#include <QAccessible>
#include <QObject>
#include <QTimer>
#include <chrono>
#include <functional>

namespace morvane {

/// Knows when screen readers find the document that takes the place of another under the keyboard: the engine
/// hands it over some time after it has shown it, mostly, and says nothing. Main thread.
class ComingDocument : public QObject {
    Q_OBJECT
public:
    /// So often it looks before it takes what it finds for what has come.
    static constexpr int mostLooks = 100;
    static constexpr std::chrono::milliseconds usualPause{50};

    /// `hasKeyboard` says whether a reader's user is in the document; `pause` is from look to look.
    explicit ComingDocument(std::function<bool()> hasKeyboard, std::chrono::milliseconds pause = usualPause,
                            QObject *parent = nullptr);

    /// A load begins, at whose end another document may have taken the place of the one that is shown.
    void begun();
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
    QAccessible::Id m_before = 0;  ///< The old document that was still found; 0 where none is awaited.
    QAccessible::Id m_settled = 0; ///< The one that was shown when the load began; 0 where that is not sure.
};

} // namespace morvane
