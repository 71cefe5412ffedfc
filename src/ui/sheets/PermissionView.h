#pragma once

#include "ui/sheets/Sheet.h"

#include <QUuid>

class QCheckBox;
class QPushButton;

namespace morvane {

class ApprovalGate;
class NoteLabel;
class ScrollingText;
class SheetHeader;

/// The sheet that asks whether a tool call may run. It shows itself while the gate has a pending call. Return
/// allows and Escape denies, wherever the focus is but on the other button.
class PermissionView : public Sheet {
    Q_OBJECT
public:
    /// `gate` must outlive the view; `window` owns it.
    PermissionView(ApprovalGate &gate, QWidget *window, SteadyNow now = &std::chrono::steady_clock::now);

protected:
    void returnPressed() override;
    void escapePressed() override;

private:
    void showPending();

    ApprovalGate &m_gate;
    SheetHeader *m_header;
    ScrollingText *m_summary;
    NoteLabel *m_advice;
    QCheckBox *m_alwaysAllow;
    QPushButton *m_deny;
    QPushButton *m_allow;
    QUuid m_shown; ///< The request on display.
};

} // namespace morvane
