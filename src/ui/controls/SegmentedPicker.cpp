#include "ui/controls/SegmentedPicker.h"

#include "ui/controls/AccessibleRole.h"
#include "ui/controls/SegmentButton.h"
#include "ui/theme/ThemeColors.h"

#include <QKeyEvent>
#include <QPainter>
#include <QStyle>
#include <algorithm>

namespace morvane {

namespace {

constexpr int frame = 3;
constexpr int spacing = 2;
constexpr qreal radius = 9;

} // namespace

SegmentedPicker::SegmentedPicker(const QString &accessibleName, const QStringList &labels, QWidget *parent)
    : QWidget(parent)
{
    setAccessibleRole(this, QAccessible::Grouping);
    setAccessibleName(accessibleName);
    // Fixed would hold the height of a single line against the layout.
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Minimum);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);

    for (qsizetype index = 0; index < labels.size(); ++index) {
        auto *segment = new SegmentButton(labels[index], this);
        segment->installEventFilter(this);
        // Not clicked(): assistive technology checks a segment without a click.
        connect(segment, &SegmentButton::toggled, this, [this, index](bool checked) {
            if (checked)
                choose(static_cast<int>(index));
        });
        m_segments.append(segment);
    }
    setCurrentIndex(0);
}

void SegmentedPicker::setCurrentIndex(int index)
{
    m_current = std::clamp(index, 0, static_cast<int>(m_segments.size()) - 1);
    for (int i = 0; i < m_segments.size(); ++i)
        m_segments[i]->setChecked(i == m_current);
    makeTabStop(m_current);
}

void SegmentedPicker::choose(int index)
{
    const bool isOther = index != m_current;
    setCurrentIndex(index);
    if (isOther)
        Q_EMIT chosen(index);
}

void SegmentedPicker::makeTabStop(int index)
{
    for (int i = 0; i < m_segments.size(); ++i)
        m_segments[i]->setFocusPolicy(i == index ? Qt::StrongFocus : Qt::ClickFocus);
}

bool SegmentedPicker::moveFocus(int from, int key)
{
    const int last = static_cast<int>(m_segments.size()) - 1;
    const int forward = layoutDirection() == Qt::RightToLeft ? Qt::Key_Left : Qt::Key_Right;
    const int backward = layoutDirection() == Qt::RightToLeft ? Qt::Key_Right : Qt::Key_Left;
    int target = from;
    if (key == forward || key == Qt::Key_Down)
        target = from == last ? 0 : from + 1;
    else if (key == backward || key == Qt::Key_Up)
        target = from == 0 ? last : from - 1;
    else if (key == Qt::Key_Home)
        target = 0;
    else if (key == Qt::Key_End)
        target = last;
    else
        return false;
    m_segments[target]->setFocus(Qt::TabFocusReason);
    return true;
}

bool SegmentedPicker::eventFilter(QObject *watched, QEvent *event)
{
    const int index = static_cast<int>(m_segments.indexOf(static_cast<SegmentButton *>(watched)));
    if (event->type() == QEvent::FocusOut)
        makeTabStop(m_current);
    if (event->type() != QEvent::KeyPress || index < 0)
        return QWidget::eventFilter(watched, event);
    const int key = static_cast<QKeyEvent *>(event)->key();
    if (key == Qt::Key_Return || key == Qt::Key_Enter) {
        choose(index);
        return true;
    }
    return moveFocus(index, key);
}

int SegmentedPicker::arrange(int width, Purpose purpose) const
{
    int x = frame;
    int y = frame;
    int rowHeight = 0;
    for (SegmentButton *segment : m_segments) {
        const QSize size = segment->sizeWithin(width - 2 * frame);
        if (x > frame && x + size.width() > width - frame) {
            x = frame;
            y += rowHeight + spacing;
            rowHeight = 0;
        }
        if (purpose == Purpose::place)
            segment->setGeometry(QStyle::visualRect(layoutDirection(), rect(), QRect(QPoint(x, y), size)));
        x += size.width() + spacing;
        rowHeight = std::max(rowHeight, size.height());
    }
    return y + rowHeight + frame;
}

QSize SegmentedPicker::sizeHint() const
{
    int width = 2 * frame;
    for (const SegmentButton *segment : m_segments)
        width += segment->sizeHint().width() + spacing;
    return {width, arrange(width, Purpose::measure)};
}

QSize SegmentedPicker::minimumSizeHint() const
{
    QSize least;
    for (const SegmentButton *segment : m_segments)
        least = least.expandedTo(segment->minimumSizeHint());
    return least + QSize(2 * frame, 2 * frame);
}

int SegmentedPicker::heightForWidth(int width) const
{
    return arrange(width, Purpose::measure);
}

void SegmentedPicker::resizeEvent(QResizeEvent *)
{
    arrange(width(), Purpose::place);
}

void SegmentedPicker::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        updateGeometry();
        arrange(width(), Purpose::place);
    }
}

void SegmentedPicker::paintEvent(QPaintEvent *)
{
    const ThemeColors colors = ThemeColors::fromPalette(palette());
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(colors.controlBorder);
    painter.setBrush(colors.surface);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
}

} // namespace morvane
