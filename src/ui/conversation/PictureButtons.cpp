#include "ui/conversation/PictureButtons.h"

#include "base/LabelText.h"
#include "ui/conversation/ConversationLayout.h"
#include "ui/conversation/MessageParts.h"
#include "ui/conversation/SentPictures.h"
#include "ui/theme/Icons.h"

#include <QToolButton>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr int frame = 4; // logical pixels between a button's edge and its picture

} // namespace

void PictureButtons::setPictures(SentPictures &pictures)
{
    m_pictures = &pictures;
    connect(&pictures, &SentPictures::arrived, this, &PictureButtons::fillIcons);
}

void PictureButtons::place(int offset, int height, const std::optional<ConversationItem> &focused)
{
    m_shown.clear();
    const ConversationContent &content = m_layout.content();
    for (qsizetype row = qMax<qsizetype>(0, m_layout.rowAt(offset)); m_pictures && row < content.count();
         ++row) {
        const int top = m_layout.top(row) - offset;
        if (top >= height)
            break;
        const ConversationItem item = content.item(row);
        if (item.kind == ConversationItem::Kind::message)
            placeRow(item, top, height, focused == item ? Qt::TabFocus : Qt::NoFocus);
    }
    for (qsizetype i = m_shown.size(); i < m_buttons.size(); ++i)
        m_buttons.at(i)->hide();
    fillIcons();
}

void PictureButtons::placeRow(const ConversationItem &item, int top, int height, Qt::FocusPolicy focus)
{
    const QList<ChatAttachment> pictures = shownPictures(m_layout.content().message(item));
    for (qsizetype i = 0; i < pictures.size(); ++i) {
        const QRect place = m_layout.pictureRect(item, i).translated(0, top);
        if (place.bottom() < 0 || place.top() >= height)
            continue;
        QToolButton *button = nextButton();
        m_shown.append(pictures.at(i));
        const QString name = u"Picture "_s + labelText(pictures.at(i).filename);
        if (button->accessibleName() != name)
            button->setAccessibleName(name);
        button->setToolTip(u"<qt>%1</qt>"_s.arg(name.toHtmlEscaped()));
        button->setGeometry(place);
        button->setIconSize(place.size() - QSize(2 * frame, 2 * frame));
        button->setFocusPolicy(focus);
        button->show();
    }
}

QToolButton *PictureButtons::nextButton()
{
    const qsizetype index = m_shown.size();
    if (index < m_buttons.size())
        return m_buttons.at(index);
    auto *button = new QToolButton(&m_host);
    button->setAccessibleDescription(u"Opens the picture."_s);
    button->setCursor(Qt::PointingHandCursor);
    QWidget::setTabOrder(m_buttons.isEmpty() ? &m_host : m_buttons.last(), button);
    connect(button, &QToolButton::clicked, this, [this, index] {
        if (index < m_shown.size())
            Q_EMIT opened(m_shown.at(index));
    });
    m_buttons.append(button);
    return button;
}

void PictureButtons::fillIcons()
{
    for (qsizetype i = 0; i < m_shown.size(); ++i) {
        const QPixmap picture = m_pictures->thumbnail(m_shown.at(i));
        m_buttons.at(i)->setIcon(picture.isNull() ? symbolIcon(Symbol::photo) : QIcon(picture));
    }
}

} // namespace morvane
