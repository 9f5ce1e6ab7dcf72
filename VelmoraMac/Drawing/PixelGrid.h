#pragma once

#include <QPoint>
#include <QRect>
#include <QRectF>

class QColor;
class QImage;
class QPainter;

// Where the pixels are that a painter draws on: of a screen, which may have fractions of a pixel a point.
namespace PixelGrid {

// Whether the painter only moves and scales, so that edges can lie between pixels.
[[nodiscard]] bool isUpright(const QPainter &painter);

// How many pixels a point has.
[[nodiscard]] double scale(const QPainter &painter);

// `rect` with its edges moved to the nearest edges of pixels, as it is where the painter turns. A line of at most a
// point keeps its width.
[[nodiscard]] QRectF aligned(const QPainter &painter, const QRectF &rect);

// `width` in whole pixels, at least one; in points, as `width`.
[[nodiscard]] double lineWidth(const QPainter &painter, double width);

// From now on `painter` counts pixels of its device instead of points.
void countPixels(QPainter &painter);

// Fills a rectangle, which counts pixels of the device. In bands: Qt's raster engine hands what it fills in many lines to
// other threads, and to wake these costs more than such fills.
void fillPixels(QPainter &painter, const QRect &rect, const QColor &color);

// Draws a picture pixel by pixel, its top left corner at `place`, which counts pixels of the device.
void drawPixels(QPainter &painter, const QPoint &place, const QImage &picture);

} // namespace PixelGrid
