#include "ui/controls/FlowLayout.h"

#include <QWidget>
#include <algorithm>

namespace morvane {

FlowLayout::FlowLayout(int spacing, QWidget *parent) : QLayout(parent)
{
    setSpacing(spacing);
    setContentsMargins({});
}

FlowLayout::~FlowLayout() = default;

void FlowLayout::addItem(QLayoutItem *item)
{
    m_items.emplace_back(item);
}

int FlowLayout::count() const
{
    return static_cast<int>(m_items.size());
}

QLayoutItem *FlowLayout::itemAt(int index) const
{
    return index >= 0 && index < count() ? m_items[static_cast<std::size_t>(index)].get() : nullptr;
}

QLayoutItem *FlowLayout::takeAt(int index)
{
    if (index < 0 || index >= count())
        return nullptr;
    const auto at = m_items.begin() + index;
    QLayoutItem *item = at->release();
    m_items.erase(at);
    return item;
}

int FlowLayout::heightForWidth(int width) const
{
    return layOut(QRect(0, 0, width, 0), Mode::measure);
}

QSize FlowLayout::minimumSize() const
{
    QSize size;
    for (const auto &item : m_items)
        size = size.expandedTo(item->minimumSize());
    return size.grownBy(contentsMargins());
}

void FlowLayout::setGeometry(const QRect &rect)
{
    QLayout::setGeometry(rect);
    layOut(rect, Mode::place);
}

int FlowLayout::layOut(const QRect &rect, Mode mode) const
{
    const QRect content = rect.marginsRemoved(contentsMargins());
    QPoint corner = content.topLeft();
    int rowHeight = 0;
    for (const auto &item : m_items) {
        if (item->isEmpty())
            continue;
        const QSize hint = item->sizeHint();
        const QSize size(std::min(hint.width(), content.width()), hint.height());
        if (rowHeight > 0 && corner.x() + size.width() > content.right() + 1) {
            corner = {content.left(), corner.y() + rowHeight + spacing()};
            rowHeight = 0;
        }
        if (mode == Mode::place)
            item->setGeometry(QRect(corner, size));
        corner.rx() += size.width() + spacing();
        rowHeight = std::max(rowHeight, size.height());
    }
    return corner.y() + rowHeight - rect.top() + contentsMargins().bottom();
}

} // namespace morvane
