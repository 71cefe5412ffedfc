#pragma once

#include <QPainter>
#include <QRect>
#include <QStyleOptionComplex>

namespace morvane {

// How MorvaneStyle draws the controls in which the user sets a value, so that they look like its text fields.
// Sizes grow with the font.

/// The frame of a field: rounded, with the mark of keyboard focus.
void drawFieldFrame(QPainter &painter, const QRect &rect, const QPalette &palette, QStyle::State state);

void drawComboBox(QPainter &painter, const QStyleOptionComboBox &option);
/// Where the parts of a combo box lie.
QRect comboBoxPart(const QStyleOptionComboBox &option, QStyle::SubControl part);

void drawSpinBox(QPainter &painter, const QStyleOptionSpinBox &option);
QRect spinBoxPart(const QStyleOptionSpinBox &option, QStyle::SubControl part);

/// A horizontal slider without tick marks, its handle in `handle`.
void drawSlider(QPainter &painter, const QStyleOptionSlider &option, const QRect &handle);

/// The side of the square that a slider's handle fills.
int sliderHandleSide(const QFontMetrics &metrics);

} // namespace morvane
