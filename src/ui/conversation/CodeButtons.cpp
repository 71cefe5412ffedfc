#include "ui/conversation/CodeButtons.h"

#include "platform/Announcer.h"
#include "ui/conversation/ConversationLayout.h"
#include "ui/markdown/SegmentText.h"
#include "ui/theme/Icons.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QTimer>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr int confirmationTime = 1500;

} // namespace

CodeButtons::CodeButtons(ConversationLayout &layout, Announcer &announcer, QWidget &host)
    : m_layout(layout), m_announcer(announcer), m_host(host)
{
}

void CodeButtons::place(int offset, int height, const std::optional<ConversationItem> &focused)
{
    m_places.clear();
    const ConversationContent &content = m_layout.content();
    for (qsizetype row = qMax<qsizetype>(0, m_layout.rowAt(offset)); row < content.count(); ++row) {
        const int rowTop = m_layout.top(row) - offset;
        if (rowTop >= height)
            break;
        const ConversationItem item = content.item(row);
        if (!content.isFormatted(item))
            continue;
        const RowFrame rowFrame = m_layout.rowFrame(item);
        const auto &segments = m_layout.peek(item).segments;
        int top = rowTop + rowFrame.top;
        for (qsizetype i = 0; i < segments.size() && top < height; ++i) {
            const TextSegment &segment = segments.at(i).segment;
            const SegmentFrame frame = m_layout.segmentFrame(item, i);
            const int headerTop = top + frame.gap;
            top += segments.at(i).height;
            if (segment.kind != TextSegment::Kind::code || !segment.startsBlock ||
                headerTop + frame.header <= 0 || headerTop >= height) {
                continue;
            }
            m_places.append({.item = item, .segment = i});
            if (m_buttons.size() < m_places.size())
                m_buttons.append(makeButton());
            QToolButton *button = m_buttons.at(m_places.size() - 1);
            button->setFont(m_layout.style().captionFont);
            const QSize size = button->sizeHint().boundedTo({frame.width, frame.header});
            button->resize(size);
            const int right = rowFrame.left + frame.left + frame.width + m_layout.style().codePadding / 2;
            button->move(right - size.width(), headerTop + (frame.header - size.height()) / 2);
            button->setFocusPolicy(focused == item ? Qt::TabFocus : Qt::NoFocus);
            button->show();
        }
    }
    for (qsizetype i = m_places.size(); i < m_buttons.size(); ++i)
        m_buttons.at(i)->hide();
}

QList<QToolButton *> CodeButtons::visibleButtons() const
{
    return m_buttons.first(m_places.size());
}

QToolButton *CodeButtons::makeButton()
{
    auto *button = new QToolButton(&m_host);
    button->setText(u"Copy"_s);
    button->setAccessibleName(u"Copy code"_s);
    button->setIcon(symbolIcon(Symbol::copy));
    button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    button->setAutoRaise(true);
    button->setCursor(Qt::PointingHandCursor);
    QWidget::setTabOrder(m_buttons.isEmpty() ? &m_host : m_buttons.last(), button);
    const qsizetype index = m_buttons.size();
    connect(button, &QToolButton::clicked, this, [this, index] { copy(index); });
    return button;
}

void CodeButtons::copy(qsizetype index)
{
    if (index >= m_places.size())
        return;
    const Place place = m_places.at(index);
    const auto &segments = m_layout.row(place.item).segments;
    TextSegment block = segments.at(place.segment).segment;
    for (qsizetype i = place.segment; i < segments.size(); ++i) {
        block.length = segments.at(i).segment.end() - block.from;
        if (segments.at(i).segment.endsBlock)
            break;
    }
    QGuiApplication::clipboard()->setText(copiedCode(m_layout.content().text(place.item), block));
    m_announcer.announce(u"Code copied."_s);
    QToolButton *button = m_buttons.at(index);
    button->setIcon(symbolIcon(Symbol::check));
    QTimer::singleShot(confirmationTime, button, [button] { button->setIcon(symbolIcon(Symbol::copy)); });
}

} // namespace morvane
