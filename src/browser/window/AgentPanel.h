#pragma once

#include "browser/window/BrowserWindowServices.h"

#include <QWidget>

class QLabel;
class QPushButton;
class QToolButton;

namespace morvane {

class ChatScrollView;
class ComposerView;

/// The bottom of the browser's window, where the user talks to the agent, in the same conversation as in the
/// main window. Expanded, it shows the latest messages, too.
class AgentPanel : public QWidget {
    Q_OBJECT
public:
    explicit AgentPanel(const BrowserWindowServices &services, QWidget *parent = nullptr);

    bool isExpanded() const { return m_details != nullptr && !m_details->isHidden(); }
    void setExpanded(bool expanded);
    /// The keyboard goes to where the user writes.
    void takeFocus();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QWidget *makeShortcuts();
    QWidget *makeDetails();
    QPushButton *makeShortcut(const QString &title);
    void updateStatus();
    void updateActivity();
    void updateShortcuts();

    const BrowserWindowServices m_services;
    QLabel *m_status;
    QToolButton *m_chevron;
    QLabel *m_activity = nullptr;
    QWidget *m_details = nullptr; ///< Made when it is first wanted.
    QList<QPushButton *> m_prompts;
    ComposerView *m_composer;
};

} // namespace morvane
