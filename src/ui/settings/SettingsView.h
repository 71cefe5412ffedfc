#pragma once

#include <QWidget>

namespace morvane {

class AppModel;
class SettingsModel;

/// The settings window: one scrolling column of sections, each of which writes through at once.
class SettingsView : public QWidget {
    Q_OBJECT
public:
    /// `model` must outlive the view. Shown as a window of its own above `parent`. Asks the provider for its
    /// list of models at once.
    SettingsView(AppModel &model, QWidget *parent);

private:
    QWidget *makeGeneralTab(AppModel &model);

    SettingsModel *m_settingsModel;
};

} // namespace morvane
