#include "ui/settings/SettingsHeader.h"

#include "ui/controls/HeadingLabel.h"
#include "ui/theme/AppMark.h"

#include <QHBoxLayout>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr int padding = 20;
constexpr int markSide = 36;
constexpr int spacing = 12;

} // namespace

SettingsHeader::SettingsHeader(QWidget *parent) : QWidget(parent)
{
    setMinimumHeight(markSide + 2 * padding);
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(padding + markSide + spacing, padding, padding, padding);
    row->addWidget(new HeadingLabel(u"Morvane Settings"_s, HeadingLabel::Level::title));
}

void SettingsHeader::paintEvent(QPaintEvent *)
{
    const int left = isRightToLeft() ? width() - padding - markSide : padding;
    QPainter painter(this);
    paintAppMark(painter, QRectF(left, (height() - markSide) / 2.0, markSide, markSide));
}

} // namespace morvane
