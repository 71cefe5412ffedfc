#pragma once

#include <QWidget>

class QToolButton;

namespace morvane {

class BrowserManager;
class BrowserMenuActions;
class URLField;

/// Back, forward, reload, the address, and what can be done with the page of the active tab.
class BrowserToolbar : public QWidget {
    Q_OBJECT
public:
    /// Both outlive the toolbar.
    BrowserToolbar(BrowserManager &manager, BrowserMenuActions &actions, QWidget *parent = nullptr);

    /// The keyboard goes to the address.
    void focusAddress();

Q_SIGNALS:
    /// The user has done with the address and goes on in the page.
    void pageWanted();
    /// The same, with an address that is being opened.
    void comingPageWanted();

private:
    void update();

    BrowserManager &m_manager;
    QToolButton *m_back;
    QToolButton *m_forward;
    QToolButton *m_bookmark;
    URLField *m_address;
};

} // namespace morvane
