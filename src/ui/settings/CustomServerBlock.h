#pragma once

#include <QWidget>

class QLineEdit;

namespace morvane {

class MenuPicker;
class NoteLabel;
class SettingsModel;
class SettingsStore;

/// Where the server of the custom provider is: a preset, or an address that the user types.
class CustomServerBlock : public QWidget {
    Q_OBJECT
public:
    /// Both must outlive the block.
    CustomServerBlock(SettingsStore &settings, SettingsModel &model, QWidget *parent = nullptr);

private:
    void refresh();

    SettingsStore &m_settings;
    SettingsModel &m_model;
    MenuPicker *m_preset;
    QLineEdit *m_baseURL;
    NoteLabel *m_warning;
};

} // namespace morvane
