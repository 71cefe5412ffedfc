#pragma once

#include <QList>
#include <QWidget>

class QToolButton;

namespace morvane {

class Announcer;
class BrowserManager;
class BrowserTab;
class BrowserTabButton;
class ScrollStrip;

/// The tabs of the browser, one beside the other, to switch to, to close and to put into another order, and a
/// button for a new one.
class BrowserTabBar : public QWidget {
    Q_OBJECT
public:
    /// Both outlive the bar.
    BrowserTabBar(BrowserManager &manager, Announcer &announcer, QWidget *parent = nullptr);

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
    void movePlace(BrowserTabButton *button, int step);
    BrowserTabButton *activeButton() const;

    BrowserManager &m_manager;
    Announcer &m_announcer;
    ScrollStrip *m_strip;
    QToolButton *m_new;
    QList<BrowserTabButton *> m_buttons;
};

} // namespace morvane
