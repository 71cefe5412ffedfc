#pragma once

#include "ui/controls/WrappingButton.h"

#include <QPixmap>

namespace morvane {

/// Whether a button shows this label: it looks like one that was made for it. It must not have the focus.
inline bool showsLabel(QAbstractButton &button, const QString &label)
{
    auto &shown = static_cast<WrappingButton &>(button);
    WrappingButton made(label, WrappingButton::Alignment::centre, shown.parentWidget());
    made.setDefault(shown.isDefault());
    made.setEnabled(shown.isEnabled());
    made.resize(shown.size());
    return made.grab().toImage() == shown.grab().toImage();
}

} // namespace morvane
