#include "Contrast.h"

#include <algorithm>
#include <cmath>

namespace {

double linear(double component)
{
    return component <= 0.04045 ? component / 12.92 : std::pow((component + 0.055) / 1.055, 2.4);
}

double luminance(const QColor &color)
{
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

QColor mixed(const QColor &from, const QColor &to, float part)
{
    return QColor::fromRgbF(std::lerp(from.redF(), to.redF(), part),
                            std::lerp(from.greenF(), to.greenF(), part),
                            std::lerp(from.blueF(), to.blueF(), part), from.alphaF());
}

} // namespace

QColor Contrast::over(const QColor &upper, const QColor &ground)
{
    QColor opaque = mixed(ground, upper, upper.alphaF());
    opaque.setAlphaF(1);
    return opaque;
}

double Contrast::ratio(const QColor &text, const QColor &ground)
{
    const double a = luminance(over(text, ground));
    const double b = luminance(ground);
    return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

QColor Contrast::legible(const QColor &text, const QList<QColor> &grounds, double wanted)
{
    double light = 0;
    for (const QColor &ground : grounds)
        light = std::max(light, luminance(ground));
    const QColor end = light < 0.3 ? QColor(Qt::white) : QColor(Qt::black);
    const auto isLegible = [&](const QColor &color) {
        return std::all_of(grounds.begin(), grounds.end(),
                           [&](const QColor &ground) { return ratio(color, ground) >= wanted; });
    };
    constexpr int steps = 40;
    for (int i = 0; i < steps; ++i) {
        const float part = static_cast<float>(i) / steps;
        QColor candidate = mixed(text, end, part);
        candidate.setAlphaF(std::lerp(text.alphaF(), 1.0F, part));
        if (isLegible(candidate))
            return candidate;
    }
    return end;
}
