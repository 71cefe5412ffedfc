#pragma once

#include "ui/settings/SettingsSection.h"

class QLineEdit;
class QPushButton;

namespace morvane {

class AppModel;

/// The API key of the current provider, hidden until the user wants to see it. Not shown for `ollama`.
class KeySection : public SettingsSection {
    Q_OBJECT
public:
    explicit KeySection(AppModel &model, QWidget *parent = nullptr);

private:
    enum class Visibility { hidden, shown };
    void setKeyVisibility(Visibility visibility);
    void refresh();

    AppModel &m_model;
    QLineEdit *m_key;
    QPushButton *m_show;
    QPushButton *m_signup;
    NoteLabel *m_note;
    Visibility m_visibility = Visibility::hidden;
};

} // namespace morvane
