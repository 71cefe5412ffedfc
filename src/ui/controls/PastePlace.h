#pragma once

#include "async/Task.h"
#include "platform/PasteSource.h"

class QWidget;

namespace morvane {

/// Where in a field something is to be pasted that has been asked for and is not there yet. Follows its place
/// while the user goes on in the field. Main thread.
class PastePlace {
public:
    virtual ~PastePlace() = default;

    /// The field; null when it is gone or by now another's: hidden, locked, or with another content that the
    /// user did not enter.
    virtual QWidget *field() const = 0;
    /// Work off the main thread that `insert` needs, once the content is known.
    virtual Task<void> prepare(PasteContent) { co_return; }
    /// Puts the content there, as if it had come when it was asked for: in front of what the user has typed
    /// since.
    virtual void insert(const PasteContent &content) = 0;
};

} // namespace morvane
