#pragma once

#include "platform/AssistiveCommands.h"

namespace morvane {

class FieldPasting;

/// What assistive technology may do to the program's windows: nothing that the user could not do, so that
/// what lies below an open sheet stays as it is. Texts and pastes take the roads of the user's own.
class WindowCommands final : public AssistiveCommands {
public:
    /// `pasting` must outlive the object.
    explicit WindowCommands(FieldPasting &pasting) : m_pasting(pasting) {}

    bool mayChange(QAccessibleInterface &element) override;
    bool replaceText(QAccessibleInterface &element, int from, int to, const QString &text) override;
    bool pasteText(QAccessibleInterface &element, int at) override;

private:
    FieldPasting &m_pasting;
};

} // namespace morvane
