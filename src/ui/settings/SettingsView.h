#pragma once

#include <QWidget>

namespace morvane {

class AppModel;

/// The settings window: one scrolling column of sections, each of which writes through at once.
class SettingsView : public QWidget {
    Q_OBJECT
public:
    /// `model` must outlive the view. Shown as a window of its own above `parent`.
    SettingsView(AppModel &model, QWidget *parent);

private:
    QWidget *makeGeneralTab(AppModel &model);
};

} // namespace morvane
