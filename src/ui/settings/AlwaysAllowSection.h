#pragma once

#include "ui/settings/SettingsSection.h"

#include <QStringList>

namespace morvane {

class AppModel;

/// The tools that run without asking, each with a button that takes it off the list.
class AlwaysAllowSection : public SettingsSection {
    Q_OBJECT
public:
    explicit AlwaysAllowSection(AppModel &model, QWidget *parent = nullptr);

private:
    void refresh();

    AppModel &m_model;
    NoteLabel *m_empty;
    QWidget *m_rows;
    QStringList m_shown;
};

} // namespace morvane
