#include "ui/settings/PermissionRow.h"

#include "ui/controls/NoteLabel.h"
#include "ui/controls/WrappingButton.h"

#include <QHBoxLayout>

using namespace Qt::StringLiterals;

namespace morvane {

PermissionRow::PermissionRow(PermissionsModel &model, const Content &content, QWidget *parent)
    : SettingsSection(content.title, parent)
{
    addNote(content.text)->setSymbol(content.symbol);
    if (content.permission)
        addState(model, *content.permission);
    if (!content.permission && content.settingsLabel.isEmpty())
        return;
    auto *buttons = new QHBoxLayout;
    if (content.permission) {
        auto *request = new WrappingButton(u"Request"_s);
        request->setAccessibleName(u"Request "_s + content.title);
        connect(request, &QPushButton::clicked, &model,
                [&model, permission = *content.permission] { model.request(permission); });
        buttons->addWidget(request);
    }
    auto *settings = new WrappingButton(content.settingsLabel);
    if (content.permission)
        settings->setAccessibleName(u"Settings for "_s + content.title);
    connect(settings, &QPushButton::clicked, &model,
            [&model, title = content.title] { model.openSettingsFor(title); });
    buttons->addWidget(settings);
    buttons->addStretch(1);
    column()->addLayout(buttons);
}

void PermissionRow::addState(PermissionsModel &model, PermissionsModel::Permission permission)
{
    NoteLabel *const configured = addNote(u"Configured"_s, NoteLabel::Tone::plain);
    configured->setSymbol(Symbol::checkCircle);
    NoteLabel *const missing = addNote(u"Not configured"_s, NoteLabel::Tone::plain);
    missing->setSymbol(Symbol::circleDashed);
    const auto refresh = [&model, permission, configured, missing] {
        const bool isConfigured = model.isConfigured(permission);
        configured->setVisible(isConfigured);
        missing->setVisible(!isConfigured);
    };
    connect(&model, &PermissionsModel::changed, this, refresh);
    refresh();
}

} // namespace morvane
