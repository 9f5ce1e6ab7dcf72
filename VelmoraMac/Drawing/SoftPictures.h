#pragma once

#include <QColor>
#include <QImage>
#include <QList>
#include <QSize>

// Smooth gradients and glows. They are dithered (ordered dithering with a Bayer matrix), so that dark colours
// show no banding.
namespace SoftPictures {

enum class Direction { down, diagonal };

// An opaque gradient through `colors` from the top edge to the bottom, or from the top left corner to the
// bottom right, with a white sheen of opacity `sheen` along the top edge.
[[nodiscard]] QImage gradient(const QSize &pixels, const QList<QColor> &colors, double sheen,
                              Direction direction = Direction::down);

// A round glow in a square of `side` pixels: `color` in the middle, nothing at the rim.
[[nodiscard]] QImage glow(int side, const QColor &color);

} // namespace SoftPictures
