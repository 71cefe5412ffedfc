#include "ui/settings/AlwaysAllowSection.h"

#include "base/Text.h"
#include "store/SettingsStore.h"
#include "tools/ToolDescription.h"
#include "ui/controls/WrappingLabel.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// Names come from the settings file, too, where anything can stand.
constexpr qsizetype longestShownName = 200;

QString capitalized(const QString &text)
{
    return text.left(1).toUpper() + text.mid(1);
}

} // namespace

AlwaysAllowSection::AlwaysAllowSection(SettingsStore &settings, QWidget *parent)
    : SettingsSection(u"Always Allow"_s, parent), m_settings(settings), m_rows(new QWidget)
{
    addNote(u"These actions run automatically without asking. Destructive commands always ask for "
            "approval first, and safe commands never ask. Remove anything you no longer want to "
            "auto-run."_s);
    m_empty = addNote(
        u"Safe commands now run automatically. You are only asked when an action is destructive or could "
        "change "
        "your files. You can tick \"always allow\" on an approval to skip future prompts for that type of "
        "action."_s);
    auto *rows = new QVBoxLayout(m_rows);
    rows->setContentsMargins(0, 0, 0, 0);
    column()->addWidget(m_rows);
    connect(&settings, &SettingsStore::changed, this, &AlwaysAllowSection::refresh);
    refresh();
}

void AlwaysAllowSection::refresh()
{
    QStringList names = m_settings.alwaysAllowedTools().values();
    names.sort();
    m_empty->setVisible(names.isEmpty());
    m_rows->setVisible(!names.isEmpty());
    if (names == m_shown)
        return;
    m_shown = names;
    for (QWidget *row : m_rows->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly)) {
        row->hide();
        row->deleteLater();
    }
    for (const QString &name : names) {
        QWidget *row = makeRow(name);
        m_rows->layout()->addWidget(row);
        row->show();
    }
}

QWidget *AlwaysAllowSection::makeRow(const QString &name)
{
    const QString shown = flattened(name, longestShownName);
    auto *row = new QWidget;
    auto *place = new QHBoxLayout(row);
    place->setContentsMargins(0, 0, 0, 0);
    auto *remove = new QPushButton(u"Remove"_s);
    remove->setAccessibleName(u"Stop always allowing "_s + shown);
    connect(remove, &QPushButton::clicked, this, [this, name] { this->remove(name); });
    auto *text = new WrappingLabel(capitalized(flattened(describeTool(name), longestShownName)));
    text->setSymbol(Symbol::checkCircle);
    place->addWidget(text, 1);
    place->addWidget(remove);
    return row;
}

void AlwaysAllowSection::remove(const QString &name)
{
    const qsizetype place = m_shown.indexOf(name);
    auto allowed = m_settings.alwaysAllowedTools();
    allowed.remove(name);
    m_settings.setAlwaysAllowedTools(allowed);
    // The button that had the focus is gone; the one that took its place is the next to be wanted.
    QList<QPushButton *> buttons;
    for (QPushButton *button : m_rows->findChildren<QPushButton *>())
        if (button->isVisibleTo(m_rows))
            buttons.append(button);
    if (!buttons.isEmpty())
        buttons[std::min(place, buttons.size() - 1)]->setFocus();
}

} // namespace morvane
