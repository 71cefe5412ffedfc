#include "ui/controls/HeadingLabel.h"

#include "ui/controls/AccessibleRole.h"

#include <QApplication>
#include <QEvent>

namespace morvane {

namespace {

qreal scaleOf(HeadingLabel::Level level)
{
    switch (level) {
    case HeadingLabel::Level::welcome:
        return 1.8;
    case HeadingLabel::Level::title:
        return 1.35;
    case HeadingLabel::Level::section:
        return 1.1;
    case HeadingLabel::Level::group:
        return 1;
    }
    Q_UNREACHABLE();
}

} // namespace

HeadingLabel::HeadingLabel(const QString &text, Level level, QWidget *parent) : QLabel(parent), m_level(level)
{
    setAccessibleRole(this, QAccessible::Heading);
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
    setHeading(text);
    updateFont();
}

void HeadingLabel::setHeading(const QString &text)
{
    setText(text);
    setAccessibleName(text);
}

void HeadingLabel::changeEvent(QEvent *event)
{
    QLabel::changeEvent(event);
    if (event->type() == QEvent::ApplicationFontChange)
        updateFont();
}

void HeadingLabel::updateFont()
{
    QFont heading = QApplication::font();
    heading.setBold(true);
    const qreal scale = scaleOf(m_level);
    if (heading.pointSizeF() > 0)
        heading.setPointSizeF(heading.pointSizeF() * scale);
    else
        heading.setPixelSize(qRound(heading.pixelSize() * scale));
    setFont(heading);
}

} // namespace morvane
