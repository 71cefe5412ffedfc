#pragma once

#include <QString>

namespace morvane {

/// The desktop entry that sets the alarms of pending reminders anew at the next login, since none survives
/// the end of a session. Any thread; blocks for file accesses.
class AutostartEntry {
public:
    /// `configFolder` is that of the XDG rules, which holds "autostart"; `helper` the program to start.
    AutostartEntry(const QString &configFolder, QString helper);

    /// Writes the entry where it is missing or names another program.
    void ensure() const;
    void remove() const;

private:
    QString m_path;
    QString m_helper;
};

} // namespace morvane
