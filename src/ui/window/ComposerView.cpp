#include "ui/window/ComposerView.h"

#include "app/AppModel.h"
#include "base/Text.h"
#include "ui/theme/Icons.h"
#include "ui/theme/ThemeColors.h"
#include "ui/window/ComposerEdit.h"

#include <QGridLayout>
#include <QLabel>
#include <QPainter>
#include <QToolButton>

namespace morvane {

namespace {

QToolButton *roundButton(const QIcon &icon, const QString &label)
{
    auto *button = new QToolButton;
    button->setIcon(icon);
    button->setIconSize({18, 18});
    button->setToolTip(label);
    button->setAccessibleName(label);
    button->setFocusPolicy(Qt::TabFocus);
    return button;
}

} // namespace

ComposerView::ComposerView(AppModel &model, QWidget *parent)
    : QWidget(parent), m_model(model), m_edit(new ComposerEdit),
      m_send(roundButton(symbolIcon(Symbol::arrowUp), QStringLiteral("Send message"))),
      m_stop(roundButton(symbolIcon(Symbol::stop), QStringLiteral("Stop generating"))), m_note(new QLabel)
{
    m_note->setTextFormat(Qt::PlainText);
    m_note->setForegroundRole(QPalette::PlaceholderText);
    m_note->setWordWrap(true);

    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(12, 10, 12, 8);
    grid->setSpacing(6);
    grid->addWidget(m_edit, 0, 0);
    grid->addWidget(m_send, 0, 1, Qt::AlignBottom);
    grid->addWidget(m_stop, 0, 1, Qt::AlignBottom);
    grid->addWidget(m_note, 1, 0, 1, 2);
    grid->setColumnStretch(0, 1);

    connect(m_edit, &ComposerEdit::sendRequested, this, [this] {
        if (canSend())
            send();
    });
    connect(m_edit, &QPlainTextEdit::textChanged, this, &ComposerView::updateState);
    connect(m_send, &QToolButton::clicked, this, &ComposerView::send);
    connect(m_stop, &QToolButton::clicked, &model, &AppModel::cancel);
    connect(&model, &AppModel::isBusyChanged, this, &ComposerView::updateState);
    connect(&model, &AppModel::updateStateChanged, this, &ComposerView::updateState);
    connect(&model, &AppModel::suggestedPrompt, this, &ComposerView::takeSuggestion);
    updateState();
}

QString ComposerView::draft() const
{
    return m_edit->toPlainText();
}

bool ComposerView::canSend() const
{
    return !trimmed(draft()).isEmpty() && !m_model.isBusy() && !m_model.isUpdateRequired();
}

void ComposerView::send()
{
    if (trimmed(draft()).isEmpty())
        return;
    if (m_model.send(draft(), {}))
        m_edit->clear();
    focusDraft();
}

void ComposerView::takeSuggestion(const QString &prompt)
{
    m_edit->setPlainText(prompt);
    m_edit->moveCursor(QTextCursor::End);
    focusDraft();
}

void ComposerView::focusDraft()
{
    m_edit->setFocus(Qt::OtherFocusReason);
}

void ComposerView::updateState()
{
    const bool busy = m_model.isBusy();
    const bool sendable = canSend();
    // Focus must not fall out of the composer when one button takes the other's place.
    const bool buttonHadFocus = m_send->hasFocus() || m_stop->hasFocus();
    m_send->setVisible(!busy);
    m_stop->setVisible(busy);
    m_send->setEnabled(sendable);
    m_send->setAccessibleName(sendable || busy
                                  ? QStringLiteral("Send message")
                                  : QStringLiteral("Send message. Add a message or an attachment first."));
    if (buttonHadFocus)
        focusDraft();
    if (m_model.isUpdateRequired())
        m_note->setText(QStringLiteral("This update is required to continue. Please update Morvane now."));
    else if (busy)
        m_note->setText(QStringLiteral("Morvane is responding…"));
    else
        m_note->setText(QStringLiteral("Return to send · ⌘N for a new conversation"));
}

void ComposerView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setPen(ThemeColors::fromPalette(palette()).border);
    painter.drawLine(0, 0, width(), 0);
}

} // namespace morvane
