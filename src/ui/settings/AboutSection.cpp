#include "ui/settings/AboutSection.h"

#include <QApplication>

using namespace Qt::StringLiterals;

namespace morvane {

AboutSection::AboutSection(QWidget *parent) : SettingsSection(u"About"_s, parent)
{
    const QString version = QApplication::applicationVersion();
    const QString build = QApplication::instance()->property("buildNumber").toString();
    NoteLabel *line = addNote(u"Morvane %1 (build %2)"_s.arg(version, build), NoteLabel::Tone::plain);
    line->setAccessibleName(u"Morvane version %1, build %2"_s.arg(version, build));
    if (const QString origin = QApplication::instance()->property("unusualUpdateOrigin").toString();
        !origin.isEmpty())
        addNote(u"Updates come from %1."_s.arg(origin));
    addNote(u"Check for updates anytime from the Morvane menu, or press Command-U."_s);
}

} // namespace morvane
