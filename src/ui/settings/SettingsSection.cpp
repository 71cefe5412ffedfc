#include "ui/settings/SettingsSection.h"

#include "ui/controls/AccessibleRole.h"

namespace morvane {

SettingsSection::SettingsSection(const QString &heading, QWidget *parent)
    : QWidget(parent), m_heading(new HeadingLabel(heading, HeadingLabel::Level::section)),
      m_column(new QVBoxLayout(this))
{
    setAccessibleRole(this, QAccessible::Grouping);
    setAccessibleName(heading);
    m_column->setContentsMargins(0, 0, 0, 0);
    m_column->setSpacing(8);
    m_column->addWidget(m_heading);
}

void SettingsSection::setSectionHeading(const QString &heading)
{
    m_heading->setHeading(heading);
    setAccessibleName(heading);
}

NoteLabel *SettingsSection::addNote(const QString &text, NoteLabel::Tone tone)
{
    auto *note = new NoteLabel(text, tone);
    m_column->addWidget(note);
    return note;
}

} // namespace morvane
