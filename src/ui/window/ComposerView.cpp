#include "ui/window/ComposerView.h"

#include "app/ConversationPort.h"
#include "app/UpdateModel.h"
#include "ui/controls/FieldPasting.h"
#include "ui/controls/HoverText.h"
#include "ui/theme/Icons.h"
#include "ui/theme/ThemeColors.h"
#include "ui/window/AttachmentArea.h"
#include "ui/window/ComposerEdit.h"
#include "ui/window/FileDialogFilters.h"

#include <QEvent>
#include <QFileDialog>
#include <QGridLayout>
#include <QLabel>
#include <QPainter>
#include <QToolButton>
#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr int smallestIcon = 18;
constexpr int rowGap = 6;

QToolButton *roundButton(const QIcon &icon, const QString &label)
{
    auto *button = new QToolButton;
    button->setIcon(icon);
    setHoverText(button, label);
    button->setAccessibleName(label);
    button->setFocusPolicy(Qt::TabFocus);
    return button;
}

} // namespace

ComposerView::ComposerView(ConversationPort &conversation, const UpdateModel &updates, FieldPasting *pasting,
                           ComposerTexts texts, QWidget *parent)
    : QWidget(parent), m_conversation(conversation), m_updates(updates), m_texts(std::move(texts)),
      m_attachments(conversation.newAttachments(this)), m_area(new AttachmentArea(*m_attachments)),
      m_edit(new ComposerEdit), m_attach(roundButton(symbolIcon(Symbol::paperclip), m_texts.attach)),
      m_send(roundButton(symbolIcon(Symbol::arrowUp), m_texts.send)),
      m_stop(roundButton(symbolIcon(Symbol::stop), m_texts.stop)), m_note(new QLabel)
{
    m_note->setTextFormat(Qt::PlainText);
    m_note->setForegroundRole(QPalette::PlaceholderText);
    m_note->setWordWrap(true);
    m_attach->setAccessibleDescription(m_texts.attachHint);
    m_edit->setPlaceholderText(m_texts.placeholder);
    m_edit->setAccessibleName(m_texts.field);
    m_edit->setAccessibleDescription(m_texts.fieldHint);

    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(12, 10, 12, 8);
    grid->setSpacing(rowGap);
    grid->addWidget(m_area, 0, 0, 1, 3);
    grid->addWidget(m_attach, 1, 0, Qt::AlignBottom);
    grid->addWidget(m_edit, 1, 1);
    grid->addWidget(m_send, 1, 2, Qt::AlignBottom);
    grid->addWidget(m_stop, 1, 2, Qt::AlignBottom);
    grid->addWidget(m_note, 2, 0, 1, 3);
    grid->setColumnStretch(1, 1);

    connect(m_edit, &ComposerEdit::sendRequested, this, &ComposerView::sendOrPostpone);
    connect(m_edit, &QPlainTextEdit::textChanged, this, [this] {
        // What the user has waited for is no change of the draft that was sent.
        if (m_postponed != Postponed::untilPasted || m_edit->isPasteAwaited())
            m_postponed = Postponed::no;
        updateState();
    });
    connect(m_edit, &ComposerEdit::pageRequested, this, &ComposerView::pageRequested);
    connect(m_attach, &QToolButton::clicked, this, &ComposerView::openFileDialog);
    connect(m_send, &QToolButton::clicked, this, &ComposerView::sendOrPostpone);
    connect(m_stop, &QToolButton::clicked, &conversation, &ConversationPort::cancel);
    connect(&conversation, &ConversationPort::isBusyChanged, this, &ComposerView::updateState);
    connect(&conversation, &ConversationPort::conversationLeft, this,
            [this] { m_postponed = Postponed::no; });
    connect(&conversation, &ConversationPort::conversationReady, this,
            [this] { sendPostponed(Postponed::untilReady); });
    connect(&updates, &UpdateModel::changed, this, &ComposerView::updateState);
    connectAttachments();
    if (pasting)
        connectPasting(*pasting);
    fitIcons();
    updateState();
}

void ComposerView::connectPasting(FieldPasting &pasting)
{
    m_edit->setPasting(pasting);
    connect(&pasting, &FieldPasting::ended, this, [this, &pasting](const QWidget *field, auto end) {
        if (field != m_edit)
            return;
        if (end == FieldPasting::End::inserted)
            return sendPostponed(Postponed::untilPasted);
        if (m_postponed != Postponed::untilPasted)
            return;
        m_postponed = Postponed::no;
        if (end == FieldPasting::End::nothing)
            pasting.announce(u"Nothing was pasted, so the message was not sent."_s);
    });
}

void ComposerView::connectAttachments()
{
    connect(m_edit, &ComposerEdit::filesPasted, this, &ComposerView::handleFiles);
    connect(m_edit, &ComposerEdit::imagePasted, this,
            [this](const QByteArray &data, const QString &name) { m_attachments->handleImage(data, name); });
    connect(m_edit, &ComposerEdit::ownImagePasted, this,
            [this](const QImage &image, const QString &name) { m_attachments->handleImage(image, name); });
    connect(m_area, &AttachmentArea::focusLeft, this, &ComposerView::focusDraft);
    connect(m_area, &AttachmentArea::buttonsChanged, this, &ComposerView::orderTabs);
    for (const auto change :
         {&PendingAttachments::attachmentsChanged, &PendingAttachments::processingCountChanged})
        connect(m_attachments, change, this, &ComposerView::updateState);
}

void ComposerView::orderTabs()
{
    // As they are seen; what was made last would come last.
    QWidget *previous = nullptr;
    for (QWidget *stop : m_area->buttons() + QList<QWidget *>{m_attach, m_edit, m_send, m_stop})
        if (QWidget *before = std::exchange(previous, stop))
            setTabOrder(before, stop);
}

QString ComposerView::draft() const
{
    return m_edit->draft();
}

bool ComposerView::hasInput() const
{
    return m_edit->hasContent() || !m_attachments->attachments().isEmpty();
}

bool ComposerView::canSend() const
{
    return hasInput() && takesMessage();
}

bool ComposerView::takesMessage() const
{
    return !m_conversation.canCancel() && m_attachments->processingCount() == 0 &&
           !m_updates.isUpdateRequired();
}

void ComposerView::send()
{
    if (!hasInput())
        return;
    if (m_conversation.send(draft(), m_attachments->attachments(), m_texts.marker)) {
        m_edit->setDraft({});
        m_attachments->clear();
    } else {
        m_postponed = m_conversation.isReady() ? Postponed::no : Postponed::untilReady;
    }
    focusDraft();
}

void ComposerView::sendOrPostpone()
{
    // With a paste that had come already nothing would happen either.
    if (!takesMessage())
        return;
    if (m_edit->isPasteAwaited())
        m_postponed = Postponed::untilPasted;
    else if (hasInput())
        send();
}

void ComposerView::sendPostponed(Postponed awaited)
{
    if (m_postponed != awaited)
        return;
    m_postponed = Postponed::no;
    // What the user has pasted since is a change of what was sent.
    if (canSend() && !m_edit->isPasteAwaited())
        send();
}

void ComposerView::handleFiles(const QList<QUrl> &urls)
{
    m_attachments->handleFiles(urls);
}

void ComposerView::takeSuggestion(const QString &prompt)
{
    m_edit->replaceDraft(prompt);
    focusDraft();
}

void ComposerView::focusDraft()
{
    m_edit->setFocus(Qt::OtherFocusReason);
}

void ComposerView::openFileDialog()
{
    if (m_dialog) {
        m_dialog->raise();
        m_dialog->activateWindow();
        return;
    }
    m_dialog = new QFileDialog(this, m_attach->accessibleName());
    m_dialog->setAttribute(Qt::WA_DeleteOnClose);
    m_dialog->setFileMode(QFileDialog::ExistingFiles);
    m_dialog->setOption(QFileDialog::HideNameFilterDetails);
    m_dialog->setNameFilters(fileDialogFilters());
    // The toolkit's own dialog does not tell urlsSelected.
    connect(m_dialog, &QFileDialog::accepted, this, [this] { handleFiles(m_dialog->selectedUrls()); });
    connect(m_dialog, &QFileDialog::finished, this, &ComposerView::focusDraft);
    m_dialog->open();
}

void ComposerView::updateState()
{
    updateSendButton();
    updateNote();
}

void ComposerView::setRoom(int room)
{
    const QMargins margins = layout()->contentsMargins();
    const int width = contentsRect().width() - margins.left() - margins.right();
    const int rest = room - margins.top() - margins.bottom() - m_note->heightForWidth(width) - 2 * rowGap;
    // What is being written comes first, and what goes along with it can be scrolled.
    m_area->setHeightLimit(std::max(0, rest - m_edit->heightOfLines(2)));
    m_edit->setHeightLimit(rest - m_area->height());
}

void ComposerView::updateSendButton()
{
    // A message that waits for the local model is a long wait, and can be taken back.
    const bool busy = m_conversation.canCancel();
    const bool sendable = canSend();
    // Focus must not fall out of the composer when one button takes the other's place.
    if (m_send->hasFocus() || m_stop->hasFocus())
        focusDraft();
    m_send->setVisible(!busy);
    m_stop->setVisible(busy);
    m_send->setEnabled(sendable);
    const QString name = !hasInput() && !busy ? m_texts.sendWithoutInput : m_texts.send;
    // The toolkit tells a reader of the name each time that it is set, which would be with each letter.
    if (m_send->accessibleName() != name)
        m_send->setAccessibleName(name);
}

void ComposerView::updateNote()
{
    if (m_updates.isUpdateRequired())
        m_note->setText(u"This update is required to continue. Please update Morvane now."_s);
    else if (m_conversation.isBusy())
        m_note->setText(u"Morvane is responding…"_s);
    else
        m_note->setText(m_texts.note);
    m_note->setVisible(!m_note->text().isEmpty());
}

void ComposerView::fitIcons()
{
    const int side = std::max(smallestIcon, fontMetrics().height());
    for (QToolButton *button : {m_attach, m_send, m_stop})
        button->setIconSize({side, side});
}

void ComposerView::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        fitIcons();
}

void ComposerView::setDropMark(bool shown)
{
    m_hasDropMark = shown;
    update();
}

void ComposerView::paintEvent(QPaintEvent *)
{
    const ThemeColors colors = ThemeColors::fromPalette(palette());
    QPainter painter(this);
    if (m_hasDropMark) {
        painter.setPen(QPen(colors.focusRing, 2));
        painter.drawRect(rect().adjusted(1, 1, -1, -1));
    } else {
        painter.setPen(colors.border);
        painter.drawLine(0, 0, width(), 0);
    }
}

} // namespace morvane
