#include "ui/settings/AboutSection.h"

#include <QApplication>

namespace morvane {

AboutSection::AboutSection(QWidget *parent) : SettingsSection(QStringLiteral("About"), parent)
{
    const QString version = QApplication::applicationVersion();
    const QString build = QApplication::instance()->property("buildNumber").toString();
    NoteLabel *line =
        addNote(QStringLiteral("Morvane %1 (build %2)").arg(version, build), NoteLabel::Tone::plain);
    line->setAccessibleName(QStringLiteral("Morvane version %1, build %2").arg(version, build));
    addNote(QStringLiteral("Check for updates anytime from the Morvane menu, or press Command-U."));
}

} // namespace morvane
