#include "ui/sheets/PermissionView.h"

#include "app/ApprovalGate.h"
#include "tools/ToolDescription.h"
#include "ui/controls/NoteLabel.h"
#include "ui/controls/WrappingButton.h"
#include "ui/controls/WrappingCheckBox.h"
#include "ui/sheets/ScrollingText.h"
#include "ui/sheets/SheetCard.h"
#include "ui/sheets/SheetHeader.h"

#include <QHBoxLayout>
#include <QPlainTextEdit>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace morvane {

PermissionView::PermissionView(ApprovalGate &gate, QWidget *window, SteadyNow now)
    : Sheet(window, std::move(now)), m_gate(gate), m_header(new SheetHeader),
      m_summary(new ScrollingText(u"Action to approve"_s)), m_advice(new NoteLabel(QString())),
      m_alwaysAllow(new WrappingCheckBox(u"Always allow this type of action without asking again"_s)),
      m_deny(new WrappingButton(u"Deny"_s)), m_allow(new WrappingButton(u"Allow"_s))
{
    m_alwaysAllow->setAccessibleName(u"Always allow this type of action"_s);
    m_alwaysAllow->setAccessibleDescription(
        u"It will run automatically next time. You can change this in Settings."_s);
    m_alwaysAllow->setToolTip(m_alwaysAllow->accessibleDescription());
    m_deny->setAccessibleName(u"Deny the action"_s);
    m_allow->setDefault(true);

    card()->content()->addWidget(m_header);
    card()->content()->addWidget(m_summary);
    card()->content()->addWidget(m_advice);
    card()->content()->addWidget(m_alwaysAllow);
    card()->setYieldingText(m_summary);
    card()->buttons()->addStretch();
    card()->buttons()->addWidget(m_deny);
    card()->buttons()->addWidget(m_allow);

    connect(m_deny, &QPushButton::clicked, this, &PermissionView::escapePressed);
    connect(m_allow, &QPushButton::clicked, this, &PermissionView::returnPressed);
    connect(&m_gate, &ApprovalGate::pendingToolCallChanged, this, &PermissionView::showPending);
    showPending();
}

void PermissionView::showPending()
{
    const auto &call = m_gate.pendingToolCall();
    if (!call) {
        m_shown = QUuid();
        closeSheet();
        m_summary->field()->letGo();
        return;
    }
    if (call->id == m_shown)
        return;
    m_shown = call->id;

    const QString title =
        call->destructive ? u"Destructive action requires approval"_s : u"Action requires approval"_s;
    m_header->setContent(call->destructive ? Symbol::triangleExclamation : Symbol::shieldExclamation,
                         call->destructive ? SheetHeader::Tone::danger : SheetHeader::Tone::caution, title);
    card()->setAccessibleName(title);
    const bool isCommand = phraseStyle(call->toolName) == PhraseStyle::command;
    m_summary->setContent(call->summary,
                          isCommand ? ScrollingText::Style::command : ScrollingText::Style::prose,
                          ScrollingText::Hidden::escaped);
    m_advice->setText(call->destructive
                          ? u"This action can delete data or be hard to undo. Only allow it if "
                            "you are sure it is safe."_s
                          : u"Only allow this if you trust what it will do on your Mac. You can "
                            "deny it and the assistant will continue without doing it."_s);
    card()->setAccessibleDescription(m_advice->text());
    m_alwaysAllow->setChecked(false);
    m_alwaysAllow->setVisible(!call->destructive);
    m_allow->setAccessibleName(call->destructive ? u"Allow this destructive action"_s
                                                 : u"Allow the action"_s);
    openSheet(m_summary->field());
}

void PermissionView::returnPressed()
{
    m_gate.resolvePermission(true, m_alwaysAllow->isChecked() && !m_alwaysAllow->isHidden());
}

void PermissionView::escapePressed()
{
    m_gate.resolvePermission(false, false);
}

} // namespace morvane
