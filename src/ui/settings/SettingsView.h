#pragma once

#include <QWidget>

class QTabWidget;

namespace morvane {

class Announcer;
class LocalModelFlow;
class MCPManager;
class SettingsModel;
struct SettingsServices;

/// The settings window: one scrolling column of sections, each of which writes through at once.
class SettingsView : public QWidget {
    Q_OBJECT
public:
    /// All must outlive the view. Shown as a window of its own above `parent`. Asks the provider for its
    /// list of models at once.
    SettingsView(const SettingsServices &services, LocalModelFlow &localModel, MCPManager &toolServers,
                 Announcer &announcer, QWidget *parent);

protected:
    /// Return presses the button that has the focus.
    void keyPressEvent(QKeyEvent *event) override;

private:
    QWidget *makeGeneralTab(const SettingsServices &services, LocalModelFlow &localModel);

    void addToolServersTab(QTabWidget &tabs, MCPManager &toolServers, Announcer &announcer);

    SettingsModel *m_settingsModel;
};

} // namespace morvane
