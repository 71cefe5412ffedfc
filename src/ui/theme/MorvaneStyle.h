#pragma once

#include <QProxyStyle>

namespace morvane {

/// The toolkit's Fusion style with Morvane's buttons, fields, scroll bars and focus marks. Reads colours from
/// the widget's palette only, so that a palette change is all that a new scheme needs.
class MorvaneStyle : public QProxyStyle {
    Q_OBJECT
public:
    MorvaneStyle();

    void drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                       const QWidget *widget) const override;
    void drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                     const QWidget *widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex *option, QPainter *painter,
                            const QWidget *widget) const override;
    QRect subElementRect(SubElement element, const QStyleOption *option,
                         const QWidget *widget) const override;
    QSize sizeFromContents(ContentsType type, const QStyleOption *option, const QSize &size,
                           const QWidget *widget) const override;
    QRect subControlRect(ComplexControl control, const QStyleOptionComplex *option, SubControl part,
                         const QWidget *widget) const override;
    int pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const override;
    int styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                  QStyleHintReturn *result) const override;

    /// The mark of keyboard focus: two logical pixels around `rect`, in the palette's focus colour.
    static void drawFocusRing(QPainter &painter, const QRectF &rect, qreal radius, const QPalette &palette);
    /// The same around what is filled with the accent colour, on which it would not be seen by itself.
    static void drawFocusRingOnAccent(QPainter &painter, const QRectF &rect, qreal radius,
                                      const QPalette &palette);

private:
    void drawButton(const QStyleOption &option, QPainter &painter) const;
    void drawScrollBar(const QStyleOptionComplex &option, QPainter &painter, const QWidget *widget) const;
};

} // namespace morvane
