#pragma once

#include "platform/DesktopSettings.h"

#include <QList>

namespace morvane {

/// Remembers which panes were asked for.
class FakeDesktopSettings final : public DesktopSettings {
public:
    bool open(Pane pane) override
    {
        opened.append(pane);
        return knowsPanes;
    }

    QList<Pane> opened;
    bool knowsPanes = true;
};

} // namespace morvane
