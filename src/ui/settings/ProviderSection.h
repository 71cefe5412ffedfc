#pragma once

#include "ui/settings/SettingsSection.h"

namespace morvane {

class CustomServerBlock;
class SegmentedPicker;
class SettingsModel;
class SettingsStore;

/// Which provider answers and with which model; for the custom provider also where its server is.
class ProviderSection : public SettingsSection {
    Q_OBJECT
public:
    /// Both must outlive the section.
    ProviderSection(SettingsStore &settings, SettingsModel &model, QWidget *parent = nullptr);

private:
    void refresh();

    SettingsStore &m_settings;
    SegmentedPicker *m_provider;
    NoteLabel *m_note;
    CustomServerBlock *m_server;
};

} // namespace morvane
