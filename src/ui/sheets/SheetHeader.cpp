#include "ui/sheets/SheetHeader.h"

#include "ui/controls/HeadingLabel.h"
#include "ui/theme/ThemeColors.h"

#include <QPainter>
#include <QVBoxLayout>

namespace morvane {

namespace {

constexpr int circle = 40;
constexpr int symbolSide = 22;
constexpr int spacing = 12;
constexpr double groundOpacity = 0.15;

QColor colorOf(SheetHeader::Tone tone, const ThemeColors &colors)
{
    switch (tone) {
    case SheetHeader::Tone::neutral:
        return colors.accent;
    case SheetHeader::Tone::caution:
        return colors.warning;
    case SheetHeader::Tone::danger:
        return colors.error;
    }
    Q_UNREACHABLE();
}

} // namespace

SheetHeader::SheetHeader(QWidget *parent)
    : QWidget(parent), m_title(new HeadingLabel(QString(), HeadingLabel::Level::title))
{
    m_title->setMinimumHeight(circle);
    m_title->setAlignment(Qt::AlignLeading | Qt::AlignVCenter);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(circle + spacing, 0, 0, 0);
    layout->addWidget(m_title);
}

void SheetHeader::setContent(Symbol symbol, Tone tone, const QString &title)
{
    m_symbol = symbol;
    m_tone = tone;
    m_title->setHeading(title);
    update();
}

QString SheetHeader::title() const
{
    return m_title->text();
}

void SheetHeader::paintEvent(QPaintEvent *)
{
    const QColor color = colorOf(m_tone, ThemeColors::fromPalette(palette()));
    QColor ground = color;
    ground.setAlphaF(groundOpacity);
    const QRect round(0, 0, circle, circle);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(ground);
    painter.drawEllipse(round);
    const int inset = (circle - symbolSide) / 2;
    painter.drawPixmap(inset, inset, symbolPixmap(m_symbol, symbolSide, color, devicePixelRatioF()));
}

} // namespace morvane
