#include "SoftPictures.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

// The threshold of a pixel, between 0 and 1: the 8 by 8 Bayer matrix of ordered dithering.
double threshold(int x, int y)
{
    static constexpr std::array<std::array<int, 8>, 8> bayer = {{{0, 32, 8, 40, 2, 34, 10, 42},
                                                                 {48, 16, 56, 24, 50, 18, 58, 26},
                                                                 {12, 44, 4, 36, 14, 46, 6, 38},
                                                                 {60, 28, 52, 20, 62, 30, 54, 22},
                                                                 {3, 35, 11, 43, 1, 33, 9, 41},
                                                                 {51, 19, 59, 27, 49, 17, 57, 25},
                                                                 {15, 47, 7, 39, 13, 45, 5, 37},
                                                                 {63, 31, 55, 23, 61, 29, 53, 21}}};
    return (bayer[static_cast<size_t>(y % 8)][static_cast<size_t>(x % 8)] + 0.5) / 64;
}

// `value` from 0 to 1 as a byte.
int dithered(double value, double threshold)
{
    return std::clamp(static_cast<int>(value * 255 + threshold), 0, 255);
}

struct Light {
    double red, green, blue;
};

Light mixed(const Light &a, const Light &b, double part)
{
    return {std::lerp(a.red, b.red, part), std::lerp(a.green, b.green, part),
            std::lerp(a.blue, b.blue, part)};
}

Light light(const QColor &color)
{
    return {color.redF(), color.greenF(), color.blueF()};
}

Light along(const QList<QColor> &colors, double part)
{
    if (colors.isEmpty())
        return {0, 0, 0};
    const double place = std::clamp(part, 0.0, 1.0) * static_cast<double>(colors.size() - 1);
    const auto first = std::min(static_cast<qsizetype>(place), colors.size() - 1);
    const auto second = std::min(first + 1, colors.size() - 1);
    return mixed(light(colors[first]), light(colors[second]), place - static_cast<double>(first));
}

} // namespace

QImage SoftPictures::gradient(const QSize &pixels, const QList<QColor> &colors, double sheen,
                              Direction direction)
{
    QImage image(pixels, QImage::Format_RGB32);
    for (int y = 0; y < pixels.height(); ++y) {
        auto *row = reinterpret_cast<QRgb *>(image.scanLine(y));
        const double down = (y + 0.5) / pixels.height();
        const double white = sheen * std::pow(std::max(0.0, 1 - down / 0.42), 2);
        Light color = mixed(along(colors, down), {1, 1, 1}, white);
        for (int x = 0; x < pixels.width(); ++x) {
            if (direction == Direction::diagonal)
                color = mixed(along(colors, (down + (x + 0.5) / pixels.width()) / 2), {1, 1, 1}, white);
            const double t = threshold(x, y);
            row[x] = qRgb(dithered(color.red, t), dithered(color.green, t), dithered(color.blue, t));
        }
    }
    return image;
}

QImage SoftPictures::glow(int side, const QColor &color)
{
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    const double middle = side / 2.0;
    const double opacity = color.alphaF();
    const auto [red, green, blue] = light(color);
    for (int y = 0; y < side; ++y) {
        auto *row = reinterpret_cast<QRgb *>(image.scanLine(y));
        const double down = (y + 0.5) / middle - 1;
        for (int x = 0; x < side; ++x) {
            const double right = (x + 0.5) / middle - 1;
            const double inner = std::max(0.0, 1 - right * right - down * down);
            const double alpha = opacity * inner * inner * inner; // Close to a Gaussian, and ends at the rim.
            const double t = threshold(x, y);
            row[x] = qRgba(dithered(alpha * red, t), dithered(alpha * green, t), dithered(alpha * blue, t),
                           dithered(alpha, t));
        }
    }
    return image;
}
