#include "ui/theme/ThemeColors.h"

#include "ui/theme/Contrast.h"

#include <QRgb>

namespace morvane {

namespace {

/// The lowest contrast over two grounds decides, so that a colour can be used on both.
QColor readableOnBoth(const QColor &color, const QColor &first, const QColor &second, double ratio)
{
    return readable(readable(color, first, ratio), second, ratio);
}

struct Shades {
    QRgb window;
    QRgb base;
    QRgb alternateBase;
    QRgb button;
    QRgb text;
    QRgb placeholder;
    QRgb disabled;
    QRgb accent;
    QRgb onAccent;
};

QPalette paletteOf(const Shades &shades)
{
    QPalette palette{QColor(shades.button), QColor(shades.window)};
    palette.setColor(QPalette::Window, shades.window);
    palette.setColor(QPalette::Base, shades.base);
    palette.setColor(QPalette::AlternateBase, shades.alternateBase);
    palette.setColor(QPalette::Button, shades.button);
    palette.setColor(QPalette::ToolTipBase, shades.alternateBase);
    for (const auto role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}) {
        palette.setColor(role, shades.text);
        palette.setColor(QPalette::Disabled, role, shades.disabled);
    }
    palette.setColor(QPalette::PlaceholderText, shades.placeholder);
    palette.setColor(QPalette::Highlight, shades.accent);
    palette.setColor(QPalette::HighlightedText, shades.onAccent);
    palette.setColor(QPalette::Disabled, QPalette::Highlight, shades.disabled);
    palette.setColor(QPalette::Link, shades.accent);
    palette.setColor(QPalette::LinkVisited, shades.accent);
    return palette;
}

} // namespace

ThemeColors ThemeColors::fromPalette(const QPalette &palette)
{
    ThemeColors colors;
    colors.window = palette.color(QPalette::Active, QPalette::Window);
    colors.surface = palette.color(QPalette::Active, QPalette::Base);
    colors.text = readableOnBoth(palette.color(QPalette::Active, QPalette::Text), colors.surface,
                                 colors.window, textContrast);
    const QColor highlight = palette.color(QPalette::Active, QPalette::Highlight);

    colors.hover = blended(colors.window, colors.text, 0.08);
    colors.codeGround = blended(colors.surface, colors.text, 0.06);
    colors.userBubble = blended(colors.surface, highlight, 0.16);
    colors.border = blended(colors.window, colors.text, 0.14);
    colors.controlBorder = readableOnBoth(blended(colors.window, colors.text, 0.3), colors.surface,
                                          colors.window, graphicsContrast);
    colors.text =
        readable(readable(colors.text, colors.codeGround, textContrast), colors.userBubble, textContrast);

    colors.secondaryText = readable(blended(colors.surface, colors.text, 0.62), colors.hover, textContrast);
    colors.secondaryText = readable(readable(colors.secondaryText, colors.userBubble, textContrast),
                                    colors.codeGround, textContrast);
    colors.accent = readableOnBoth(highlight, colors.userBubble, colors.hover, textContrast);
    colors.onAccent = contrastRatio(Qt::white, colors.accent) >= contrastRatio(Qt::black, colors.accent)
                          ? QColor(Qt::white)
                          : QColor(Qt::black);
    colors.selection = highlight;
    colors.onSelection =
        readable(palette.color(QPalette::Active, QPalette::HighlightedText), highlight, textContrast);
    colors.focusRing = readableOnBoth(highlight, colors.surface, colors.window, graphicsContrast);
    colors.success = readableOnBoth(QColor(0x2e, 0x9e, 0x5b), colors.surface, colors.hover, textContrast);
    colors.warning = readableOnBoth(QColor(0xe0, 0x8a, 0x1e), colors.surface, colors.hover, textContrast);
    colors.error = readableOnBoth(QColor(0xe0, 0x45, 0x45), colors.surface, colors.hover, textContrast);
    return colors;
}

QPalette lightPalette()
{
    return paletteOf({.window = qRgb(0xf3, 0xf3, 0xf6),
                      .base = qRgb(0xff, 0xff, 0xff),
                      .alternateBase = qRgb(0xf7, 0xf7, 0xfa),
                      .button = qRgb(0xff, 0xff, 0xff),
                      .text = qRgb(0x1c, 0x1d, 0x22),
                      .placeholder = qRgb(0x6a, 0x6c, 0x76),
                      .disabled = qRgb(0x8c, 0x8e, 0x98),
                      .accent = qRgb(0x4a, 0x4f, 0xd0),
                      .onAccent = qRgb(0xff, 0xff, 0xff)});
}

QPalette darkPalette()
{
    return paletteOf({.window = qRgb(0x1d, 0x1e, 0x24),
                      .base = qRgb(0x16, 0x17, 0x1b),
                      .alternateBase = qRgb(0x22, 0x23, 0x2a),
                      .button = qRgb(0x2c, 0x2d, 0x36),
                      .text = qRgb(0xec, 0xec, 0xf1),
                      .placeholder = qRgb(0xa2, 0xa3, 0xaf),
                      .disabled = qRgb(0x7d, 0x7f, 0x8b),
                      .accent = qRgb(0x8d, 0x92, 0xff),
                      .onAccent = qRgb(0x12, 0x13, 0x18)});
}

} // namespace morvane
