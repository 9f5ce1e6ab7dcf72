#pragma once

#include <QColor>
#include <QImage>
#include <QList>
#include <QSize>

// Pictures made of nothing but smooth light. Their steps are dithered, so that no bands show on dark grounds.
namespace SoftPictures {

enum class Direction { down, diagonal };

// An opaque gradient through `colors` from the top edge to the bottom, or from the top left corner to the
// bottom right, with a white sheen of opacity `sheen` along the top edge.
[[nodiscard]] QImage gradient(const QSize &pixels, const QList<QColor> &colors, double sheen,
                              Direction direction = Direction::down);

// A round glow in a square of `side` pixels: `color` in the middle, nothing at the rim.
[[nodiscard]] QImage glow(int side, const QColor &color);

} // namespace SoftPictures
