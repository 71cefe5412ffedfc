#include "ui/settings/SettingsSection.h"

#include "ui/controls/AccessibleRole.h"
#include "ui/theme/CardPainting.h"

namespace morvane {

namespace {

constexpr int padding = 16;
constexpr int spacing = 8;
constexpr int gap = 8;

} // namespace

SettingsSection::SettingsSection(const QString &heading, QWidget *parent)
    : QWidget(parent), m_heading(new HeadingLabel(heading, HeadingLabel::Level::section)),
      m_column(new QVBoxLayout(this))
{
    setAccessibleRole(this, QAccessible::Grouping);
    setAccessibleName(heading);
    m_column->setContentsMargins(padding, padding, padding, padding);
    m_column->setSpacing(spacing);
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

void SettingsSection::addGap()
{
    m_column->addSpacing(gap);
}

void SettingsSection::paintEvent(QPaintEvent *)
{
    paintCard(*this);
}

} // namespace morvane
