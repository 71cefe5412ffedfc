#include "ui/controls/FlowLayout.h"

#include <QWidget>
#include <algorithm>
#include <utility>
#include <vector>

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
    std::vector<std::pair<QLayoutItem *, QRect>> row;
    const auto endRow = [&] {
        for (const auto &[item, place] : row)
            if (mode == Mode::place) // what is lower stands in the middle of the row
                item->setGeometry(place.translated(0, (rowHeight - place.height()) / 2));
        row.clear();
    };
    for (const auto &item : m_items) {
        if (item->isEmpty())
            continue;
        const QSize hint = item->sizeHint();
        const int width = std::min(hint.width(), content.width());
        const bool wraps = width < hint.width() && item->hasHeightForWidth();
        const QSize size(width, wraps ? item->heightForWidth(width) : hint.height());
        if (rowHeight > 0 && corner.x() + size.width() > content.right() + 1) {
            endRow();
            corner = {content.left(), corner.y() + rowHeight + spacing()};
            rowHeight = 0;
        }
        row.emplace_back(item.get(), QRect(corner, size));
        corner.rx() += size.width() + spacing();
        rowHeight = std::max(rowHeight, size.height());
    }
    endRow();
    return corner.y() + rowHeight - rect.top() + contentsMargins().bottom();
}

} // namespace morvane
