#pragma once

#include "app/PermissionsModel.h"
#include "ui/settings/SettingsSection.h"
#include "ui/theme/Icons.h"

#include <optional>

namespace morvane {

/// One thing that the desktop may let the assistant do: what for, whether it does, and what the user can do
/// about it.
class PermissionRow : public SettingsSection {
    Q_OBJECT
public:
    struct Content {
        QString title;
        Symbol symbol;
        QString text;
        std::optional<PermissionsModel::Permission> permission; ///< Without one there is no state to show.
        QString settingsLabel; ///< Of the button that opens the desktop's settings; empty for no button.
    };

    /// `model` must outlive the row.
    PermissionRow(PermissionsModel &model, const Content &content, QWidget *parent = nullptr);

private:
    void addState(PermissionsModel &model, PermissionsModel::Permission permission);
};

} // namespace morvane
