#pragma once

#include "ui/settings/SettingsSection.h"

#include <QStringList>

namespace morvane {

class SettingsStore;

/// The tools that run without asking, each with a button that takes it off the list.
class AlwaysAllowSection : public SettingsSection {
    Q_OBJECT
public:
    /// `settings` must outlive the section.
    explicit AlwaysAllowSection(SettingsStore &settings, QWidget *parent = nullptr);

private:
    QWidget *makeRow(const QString &name);
    void remove(const QString &name);
    void refresh();

    SettingsStore &m_settings;
    NoteLabel *m_empty;
    QWidget *m_rows;
    QStringList m_shown;
};

} // namespace morvane
