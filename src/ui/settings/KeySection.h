#pragma once

#include "ui/settings/SettingsSection.h"

class QLineEdit;
class QPushButton;

namespace morvane {

class SettingsModel;
class SettingsStore;
class WrappingButton;

/// The API key of the current provider, hidden until the user wants to see it, and again when the window
/// closes or another provider is chosen. Not shown for `ollama`.
class KeySection : public SettingsSection {
    Q_OBJECT
public:
    /// Both must outlive the section.
    KeySection(SettingsStore &settings, SettingsModel &model, QWidget *parent = nullptr);

protected:
    void hideEvent(QHideEvent *event) override;

private:
    enum class Visibility { hidden, shown };
    void setKeyVisibility(Visibility visibility);
    void refresh();

    SettingsStore &m_settings;
    QLineEdit *m_key;
    QPushButton *m_show;
    WrappingButton *m_signup;
    NoteLabel *m_note;
    Visibility m_visibility = Visibility::hidden;
};

} // namespace morvane
