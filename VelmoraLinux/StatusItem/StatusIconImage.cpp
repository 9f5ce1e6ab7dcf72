#include "StatusIconImage.h"

#include <QPainter>

namespace {
constexpr double edgeStrength = 0.12; // Each of the eight copies below adds to it.

QImage fill(QImage shape, const QColor &color)
{
    QPainter painter(&shape);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(shape.rect(), color);
    return shape;
}
} // namespace

QImage paintStatusIcon(const QImage &templateImage, int pixels, const QColor &color, double opacity)
{
    const auto format = QImage::Format_ARGB32_Premultiplied;
    QImage shape = templateImage.scaled(pixels, pixels, Qt::KeepAspectRatio, Qt::SmoothTransformation)
                       .convertToFormat(format);
    shape.setDevicePixelRatio(1); // One point is one pixel.
    const QPoint corner((pixels - shape.width()) / 2, (pixels - shape.height()) / 2);
    const QImage edge = fill(shape, color.lightnessF() > 0.5 ? Qt::black : Qt::white);

    QImage image(pixels, pixels, format);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setOpacity(edgeStrength);
    for (int x = -1; x <= 1; ++x) {
        for (int y = -1; y <= 1; ++y)
            painter.drawImage(corner + QPoint(x, y), edge);
    }
    painter.setOpacity(1);
    painter.drawImage(corner, fill(shape, color));
    // Applied to the finished image: applied to each layer, the outline would show through the shape.
    painter.setCompositionMode(QPainter::CompositionMode_DestinationIn);
    painter.fillRect(image.rect(), QColor::fromRgbF(0, 0, 0, static_cast<float>(opacity)));
    return image;
}
