#include "PixelGrid.h"

#include <QColor>
#include <QImage>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace {

constexpr int bandLines = 64; // Fewer than Qt shares among threads.

// A line is equally wide wherever it stands; what is wider ends at the pixel nearest to its end.
double farEdge(double near, double far, double scale)
{
    const double width = far - near;
    // Half a pixel at the far end is left out: it may lie outside the window.
    return width <= 1.01 * scale ? std::round(near) + std::max(1.0, std::round(width)) : std::ceil(far - 0.5);
}

} // namespace

bool PixelGrid::isUpright(const QPainter &painter)
{
    return painter.deviceTransform().type() <= QTransform::TxScale;
}

double PixelGrid::scale(const QPainter &painter)
{
    const QTransform toDevice = painter.deviceTransform();
    return std::hypot(toDevice.m11(), toDevice.m12());
}

QRectF PixelGrid::aligned(const QPainter &painter, const QRectF &rect)
{
    const QTransform toDevice = painter.deviceTransform();
    if (!isUpright(painter) || !toDevice.isInvertible())
        return rect;
    const QRectF device = toDevice.mapRect(rect);
    const QPointF topLeft(std::round(device.left()), std::round(device.top()));
    const QPointF bottomRight(farEdge(device.left(), device.right(), toDevice.m11()),
                              farEdge(device.top(), device.bottom(), toDevice.m22()));
    return toDevice.inverted().mapRect(QRectF(topLeft, bottomRight));
}

double PixelGrid::lineWidth(const QPainter &painter, double width)
{
    const double pixels = scale(painter);
    return pixels > 0 ? std::max(1.0, std::round(width * pixels)) / pixels : width;
}

void PixelGrid::countPixels(QPainter &painter)
{
    painter.resetTransform();
    painter.setTransform(painter.deviceTransform().inverted());
}

void PixelGrid::fillPixels(QPainter &painter, const QRect &rect, const QColor &color)
{
    for (int top = rect.top(); top <= rect.bottom(); top += bandLines)
        painter.fillRect(rect.left(), top, rect.width(), std::min(bandLines, rect.bottom() + 1 - top), color);
}

void PixelGrid::drawPixels(QPainter &painter, const QPoint &place, const QImage &picture)
{
    painter.save();
    countPixels(painter);
    painter.drawImage(place, picture);
    painter.restore();
}
