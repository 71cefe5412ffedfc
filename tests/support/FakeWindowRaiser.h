#pragma once

#include "platform/WindowRaiser.h"

#include <QStringList>
#include <QWindow>

namespace morvane {

/// Remembers which windows were brought to the user, by their titles, and gives them the focus if they are to
/// have it.
class FakeWindowRaiser final : public WindowRaiser {
public:
    void activate(QWindow &window, const ActivationToken &) override
    {
        raised.append(QStringLiteral("activated ") + window.title());
        window.requestActivate();
    }
    void raiseWithoutFocus(QWindow &window) override
    {
        raised.append(QStringLiteral("raised ") + window.title());
    }

    QStringList raised;
};

} // namespace morvane
