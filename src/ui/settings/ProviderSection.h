#pragma once

#include "ui/settings/SettingsSection.h"

class QComboBox;
class QLineEdit;
class QPushButton;

namespace morvane {

class AppModel;
class SegmentedPicker;

/// Which provider answers and with which model; for the custom provider also where its server is.
class ProviderSection : public SettingsSection {
    Q_OBJECT
public:
    explicit ProviderSection(AppModel &model, QWidget *parent = nullptr);

private:
    QWidget *makeServerBlock();
    QWidget *makeModelBlock();
    void chooseProvider(int index);
    void chooseModel(int index);
    void resetModel();
    void refresh();
    void refreshModels();

    AppModel &m_model;
    SegmentedPicker *m_provider;
    NoteLabel *m_note;
    QWidget *m_server;
    QComboBox *m_preset;
    QLineEdit *m_baseURL;
    NoteLabel *m_warning;
    QComboBox *m_models;
    QLineEdit *m_modelName;
    QPushButton *m_reset;
};

} // namespace morvane
