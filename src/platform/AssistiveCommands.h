#pragma once

#include <QString>

class QAccessibleInterface;

namespace morvane {

/// What assistive technology wants done to a part of the windows, before the toolkit does it. Main thread.
class AssistiveCommands {
public:
    virtual ~AssistiveCommands() = default;

    /// Whether the user may press or change `element` now.
    virtual bool mayChange(QAccessibleInterface &element) = 0;
    /// Puts a text of any length in the place of what stands between two positions of a field, in UTF-16
    /// units; beyond its end they mean the end. False where the toolkit is to do it.
    virtual bool replaceText(QAccessibleInterface &element, int from, int to, const QString &text) = 0;
    /// Pastes the clipboard at a position of a field. False where the toolkit is to do it.
    virtual bool pasteText(QAccessibleInterface &element, int at) = 0;
};

} // namespace morvane
