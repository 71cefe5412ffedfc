#include "ui/window/AttachmentChips.h"

#include "ui/controls/AccessibleRole.h"
#include "ui/controls/FlowLayout.h"
#include "ui/window/AttachmentChip.h"

#include <QEvent>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr int spacing = 6;
constexpr int shownRows = 3;

} // namespace

AttachmentChips::AttachmentChips(QWidget *parent) : QScrollArea(parent), m_content(new QWidget)
{
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::NoFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setAccessibleRole(m_content, QAccessible::List);
    new FlowLayout(spacing, m_content);
    setWidget(m_content);
    viewport()->setAutoFillBackground(false);
    m_content->setAutoFillBackground(false);
    hide();
}

void AttachmentChips::setAttachments(const QList<ChatAttachment> &attachments)
{
    const auto has = [&attachments](const AttachmentChip *chip) {
        return std::any_of(attachments.begin(), attachments.end(), [chip](const ChatAttachment &attachment) {
            return attachment.id == chip->attachmentID();
        });
    };
    for (qsizetype index = m_chips.size() - 1; index >= 0; --index)
        if (!has(m_chips.at(index)))
            removeChip(index);
    // Files are only ever added behind those that are there.
    for (qsizetype index = m_chips.size(); index < attachments.size(); ++index)
        addChip(attachments.at(index));
    const auto count = QString::number(attachments.size());
    m_content->setAccessibleName(
        count + (attachments.size() == 1 ? u" pending attachment"_s : u" pending attachments"_s));
    setVisible(!attachments.isEmpty());
    fitHeight();
}

QList<QWidget *> AttachmentChips::buttons() const
{
    QList<QWidget *> buttons;
    for (const AttachmentChip *chip : m_chips)
        buttons.append(chip->button());
    return buttons;
}

void AttachmentChips::addChip(const ChatAttachment &attachment)
{
    auto *chip = new AttachmentChip(attachment);
    connect(chip, &AttachmentChip::removeRequested, this, &AttachmentChips::removeRequested);
    m_content->layout()->addWidget(chip);
    m_chips.append(chip);
}

void AttachmentChips::removeChip(qsizetype index)
{
    AttachmentChip *chip = m_chips.takeAt(index);
    if (chip->hasButtonFocus()) {
        // The next chip takes its place under the keyboard; behind the last one there is none.
        if (m_chips.isEmpty())
            Q_EMIT focusLeft();
        else
            m_chips.at(std::min(index, m_chips.size() - 1))->focusButton();
    }
    m_content->layout()->removeWidget(chip);
    chip->hide();
    // It is in the middle of telling that it was pressed.
    chip->deleteLater();
}

void AttachmentChips::fitHeight()
{
    if (m_chips.isEmpty())
        return;
    const int row = m_chips.constFirst()->sizeHint().height();
    const int most = shownRows * row + (shownRows - 1) * spacing;
    setFixedHeight(std::min(m_content->layout()->heightForWidth(viewport()->width()), most));
}

void AttachmentChips::resizeEvent(QResizeEvent *event)
{
    QScrollArea::resizeEvent(event);
    fitHeight();
}

void AttachmentChips::changeEvent(QEvent *event)
{
    QScrollArea::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        fitHeight();
}

} // namespace morvane
