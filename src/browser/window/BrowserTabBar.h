#pragma once

#include <QList>
#include <QWidget>

class QToolButton;

namespace morvane {

class BrowserManager;
class BrowserTab;
class BrowserTabButton;
class ScrollStrip;

/// The tabs of the browser, one beside the other, to switch to, to close and to put into another order, and a
/// button for a new one.
class BrowserTabBar : public QWidget {
    Q_OBJECT
public:
    /// `manager` outlives the bar.
    explicit BrowserTabBar(BrowserManager &manager, QWidget *parent = nullptr);

    /// The keyboard goes to the active tab.
    void takeFocus();

private:
    void insert(qsizetype index);
    void remove(qsizetype index);
    void move(qsizetype from, qsizetype to);
    void followActiveTab();
    void stopTabKeyAt(const BrowserTabButton *wanted);
    void drag(BrowserTabButton *button, int x);
    void moveFocus(const BrowserTabButton *button, int step);
    BrowserTabButton *activeButton() const;

    BrowserManager &m_manager;
    ScrollStrip *m_strip;
    QToolButton *m_new;
    QList<BrowserTabButton *> m_buttons;
};

} // namespace morvane
