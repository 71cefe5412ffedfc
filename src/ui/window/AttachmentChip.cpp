#include "ui/window/AttachmentChip.h"

#include "base/LabelText.h"
#include "base/Text.h"
#include "ui/controls/AccessibleRole.h"
#include "ui/controls/HoverText.h"
#include "ui/theme/ThemeColors.h"

#include <QEvent>
#include <QPainter>
#include <QToolButton>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr int margin = 8;
constexpr int gap = 6;
constexpr int smallestHeight = 28; // what a finger or a shaky hand still hits
constexpr qreal radius = 8;
/// Average characters of a name that are shown.
constexpr int shownCharacters = 28;
constexpr int fewestCharacters = 6;

Symbol symbolOf(AttachmentKind kind)
{
    switch (kind) {
    case AttachmentKind::image:
        return Symbol::photo;
    case AttachmentKind::pdf:
        return Symbol::document;
    case AttachmentKind::text:
        return Symbol::documentPlain;
    }
    Q_UNREACHABLE();
}

/// What the symbol says to those who see it.
QString wordFor(AttachmentKind kind)
{
    switch (kind) {
    case AttachmentKind::image:
        return u"image"_s;
    case AttachmentKind::pdf:
        return u"PDF"_s;
    case AttachmentKind::text:
        return u"text"_s;
    }
    Q_UNREACHABLE();
}

} // namespace

AttachmentChip::AttachmentChip(const ChatAttachment &attachment, QWidget *parent)
    : QWidget(parent), m_id(attachment.id), m_name(singleLine(labelText(attachment.filename))),
      m_symbol(symbolOf(attachment.kind)), m_remove(new QToolButton(this))
{
    setAccessibleRole(this, QAccessible::ListItem);
    setAccessibleName(u"Attachment "_s + m_name + u", "_s + wordFor(attachment.kind));
    setToolTip(m_name.toHtmlEscaped());
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
    const QString label = u"Remove attachment "_s + m_name;
    m_remove->setIcon(symbolIcon(Symbol::cross));
    m_remove->setAutoRaise(true);
    m_remove->setFocusPolicy(Qt::TabFocus);
    m_remove->setAccessibleName(label);
    setHoverText(m_remove, label.toHtmlEscaped());
    connect(m_remove, &QToolButton::clicked, this, [this] { Q_EMIT removeRequested(m_id); });
}

bool AttachmentChip::hasButtonFocus() const
{
    return m_remove->hasFocus();
}

QWidget *AttachmentChip::button() const
{
    return m_remove;
}

void AttachmentChip::focusButton()
{
    m_remove->setFocus(Qt::OtherFocusReason);
}

int AttachmentChip::buttonSide() const
{
    return std::max(smallestHeight, fontMetrics().height() + gap);
}

int AttachmentChip::widthWithoutName() const
{
    return margin + symbolSide() + gap + gap + buttonSide();
}

QSize AttachmentChip::sizeHint() const
{
    const int name = std::min(fontMetrics().horizontalAdvance(m_name) + 1,
                              shownCharacters * fontMetrics().averageCharWidth());
    return {widthWithoutName() + name, buttonSide()};
}

QSize AttachmentChip::minimumSizeHint() const
{
    return {widthWithoutName() + fewestCharacters * fontMetrics().averageCharWidth(), buttonSide()};
}

QRect AttachmentChip::nameRect() const
{
    return QRect(margin + symbolSide() + gap, 0, width() - widthWithoutName(), height());
}

void AttachmentChip::paintEvent(QPaintEvent *)
{
    const ThemeColors colors = ThemeColors::fromPalette(palette());
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(colors.border);
    painter.setBrush(colors.codeGround);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    painter.drawPixmap(margin, (height() - symbolSide()) / 2,
                       symbolPixmap(m_symbol, symbolSide(), colors.secondaryText, devicePixelRatioF()));
    const QRect name = nameRect();
    painter.setPen(colors.text);
    painter.drawText(name, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine,
                     fontMetrics().elidedText(m_name, Qt::ElideMiddle, name.width()));
}

void AttachmentChip::resizeEvent(QResizeEvent *)
{
    const int side = height() - 4;
    m_remove->setGeometry(width() - side - 2, 2, side, side);
    m_remove->setIconSize({fontMetrics().height() * 3 / 4, fontMetrics().height() * 3 / 4});
}

void AttachmentChip::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        updateGeometry();
}

} // namespace morvane
