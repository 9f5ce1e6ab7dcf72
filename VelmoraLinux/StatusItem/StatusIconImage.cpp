#include "StatusIconImage.h"

#include <QPainter>

#include <cmath>

namespace {
constexpr double edgeStrength = 0.5;     // Each of the copies below adds to it.
constexpr double middleLuminance = 0.18; // As far from black as from white, as contrast is reckoned.

QImage fill(QImage shape, const QColor &color)
{
    QPainter painter(&shape);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(shape.rect(), color);
    return shape;
}
} // namespace

bool isDarkGround(const QColor &ground)
{
    const auto linear = [](double value) { return std::pow(value, 2.2); };
    return 0.2126 * linear(ground.redF()) + 0.7152 * linear(ground.greenF()) +
               0.0722 * linear(ground.blueF()) <
           middleLuminance;
}

QImage paintStatusIcon(const QImage &templateImage, int pixels, const QColor &color, double opacity,
                       IconEdge edge)
{
    const auto format = QImage::Format_ARGB32_Premultiplied;
    QImage shape = templateImage.scaled(pixels, pixels, Qt::KeepAspectRatio, Qt::SmoothTransformation)
                       .convertToFormat(format);
    shape.setDevicePixelRatio(1); // One point is one pixel.
    const QPoint corner((pixels - shape.width()) / 2, (pixels - shape.height()) / 2);
    const QImage outline = fill(shape, color.lightnessF() > 0.5 ? Qt::black : Qt::white);

    QImage image(pixels, pixels, format);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setOpacity(edge == IconEdge::none ? 0 : edgeStrength);
    for (int x = -1; x <= 1; ++x) {
        for (int y = -1; y <= 1; ++y)
            painter.drawImage(corner + QPoint(x, y), outline);
    }
    painter.setOpacity(1);
    painter.drawImage(corner, fill(shape, color));
    // Applied to the finished image: applied to each layer, the outline would show through the shape.
    painter.setCompositionMode(QPainter::CompositionMode_DestinationIn);
    painter.fillRect(image.rect(), QColor::fromRgbF(0, 0, 0, static_cast<float>(opacity)));
    return image;
}
