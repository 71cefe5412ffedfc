#pragma once

#include "platform/InputSource.h"

#include <QList>
#include <QString>
#include <memory>
#include <stop_token>

namespace morvane {

/// Mouse and keyboard of the desktop. Any thread. DisplaySilent.h tells what these and sources throw.
class InputEvents {
public:
    virtual ~InputEvents() = default;

    /// Whether events can be posted now. `stop` ends the waiting for an answer, by DisplaySilent.
    virtual bool isTrusted(const std::stop_token &stop) = 0;
    /// Has the desktop ask the user for it, where it does so; returns at once.
    virtual void requestTrust() = 0;

    /// `stop` ends the waiting of the source, too; what it holds it lets go of all the same.
    virtual std::unique_ptr<InputSource> newSource(const std::stop_token &stop) = 0;

    /// What each key types by itself in the user's present layout, by virtual key code from 0 to 127; an
    /// empty text for none. The list is empty if the layout is not known.
    virtual QList<QString> layoutCharacters() = 0;
};

} // namespace morvane
