#include "ui/theme/Contrast.h"

#include <algorithm>
#include <cmath>

namespace morvane {

namespace {

double linear(double channel)
{
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const QColor &color)
{
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

} // namespace

double contrastRatio(const QColor &first, const QColor &second)
{
    const auto [darker, lighter] = std::minmax({luminance(first), luminance(second)});
    return (lighter + 0.05) / (darker + 0.05);
}

QColor blended(const QColor &under, const QColor &over, double share)
{
    const auto mix = [share](float from, float to) { return from + (to - from) * static_cast<float>(share); };
    return QColor::fromRgbF(mix(under.redF(), over.redF()), mix(under.greenF(), over.greenF()),
                            mix(under.blueF(), over.blueF()));
}

QColor readable(const QColor &color, const QColor &ground, double ratio)
{
    const QColor end = contrastRatio(Qt::black, ground) > contrastRatio(Qt::white, ground)
                           ? QColor(Qt::black)
                           : QColor(Qt::white);
    constexpr int steps = 20;
    for (int step = 0; step < steps; ++step) {
        const QColor shade = blended(color, end, static_cast<double>(step) / steps);
        if (contrastRatio(shade, ground) >= ratio)
            return shade;
    }
    return end;
}

} // namespace morvane
