#include "ui/settings/AlwaysAllowSection.h"

#include "app/AppModel.h"
#include "store/SettingsStore.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace morvane {

AlwaysAllowSection::AlwaysAllowSection(AppModel &model, QWidget *parent)
    : SettingsSection(QStringLiteral("Always Allow"), parent), m_model(model), m_rows(new QWidget)
{
    addNote(
        QStringLiteral("These actions run automatically without asking. Destructive commands always ask for "
                       "approval first, and safe commands never ask. Remove anything you no longer want to "
                       "auto-run."));
    m_empty = addNote(QStringLiteral(
        "Safe commands now run automatically. You are only asked when an action is destructive or could "
        "change "
        "your files. You can tick \"always allow\" on an approval to skip future prompts for that type of "
        "action."));
    auto *rows = new QVBoxLayout(m_rows);
    rows->setContentsMargins(0, 0, 0, 0);
    column()->addWidget(m_rows);
    connect(&model.settings(), &SettingsStore::changed, this, &AlwaysAllowSection::refresh);
    refresh();
}

void AlwaysAllowSection::refresh()
{
    QStringList names = m_model.settings().alwaysAllowedTools().values();
    names.sort();
    m_empty->setVisible(names.isEmpty());
    m_rows->setVisible(!names.isEmpty());
    if (names == m_shown)
        return;
    m_shown = names;
    for (QWidget *row : m_rows->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly))
        row->deleteLater();
    for (const QString &name : names) {
        auto *row = new QWidget;
        auto *place = new QHBoxLayout(row);
        place->setContentsMargins(0, 0, 0, 0);
        auto *label = new QLabel(name);
        label->setTextFormat(Qt::PlainText);
        auto *remove = new QPushButton(QStringLiteral("Remove"));
        remove->setAccessibleName(QStringLiteral("Stop always allowing ") + name);
        connect(remove, &QPushButton::clicked, this, [this, name] {
            auto allowed = m_model.settings().alwaysAllowedTools();
            allowed.remove(name);
            m_model.settings().setAlwaysAllowedTools(allowed);
        });
        place->addWidget(label, 1);
        place->addWidget(remove);
        m_rows->layout()->addWidget(row);
    }
}

} // namespace morvane
