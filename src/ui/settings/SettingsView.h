#pragma once

#include <QWidget>

namespace morvane {

class LocalModelFlow;
class SettingsModel;
struct SettingsServices;

/// The settings window: one scrolling column of sections, each of which writes through at once.
class SettingsView : public QWidget {
    Q_OBJECT
public:
    /// Both must outlive the view. Shown as a window of its own above `parent`. Asks the provider for its
    /// list of models at once.
    SettingsView(const SettingsServices &services, LocalModelFlow &localModel, QWidget *parent);

private:
    QWidget *makeGeneralTab(const SettingsServices &services, LocalModelFlow &localModel);

    SettingsModel *m_settingsModel;
};

} // namespace morvane
