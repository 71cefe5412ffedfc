#pragma once

#include <QWidget>

class QLabel;
class QLineEdit;
class QPushButton;

namespace morvane {

class MenuPicker;
class NoteLabel;
class SettingsModel;
class SettingsStore;

/// The choice of the model: one of the provider's list, or a name that the user types.
class ModelBlock : public QWidget {
    Q_OBJECT
public:
    /// Both must outlive the block.
    ModelBlock(SettingsStore &settings, SettingsModel &model, QWidget *parent = nullptr);

private:
    void addRows();
    void choose(const QString &tag);
    void showModels();
    void refresh();

    SettingsStore &m_settings;
    SettingsModel &m_model;
    QLabel *m_label;
    MenuPicker *m_models;
    QLabel *m_nameLabel;
    QLineEdit *m_name;
    QPushButton *m_reset;
    NoteLabel *m_status;
};

} // namespace morvane
