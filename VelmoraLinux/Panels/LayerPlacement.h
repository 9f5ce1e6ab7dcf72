#pragma once

#include <QMargins>
#include <QPoint>
#include <QRect>
#include <QSize>

#include <cstdint>
#include <optional>

// Where a surface of the layer shell is: the edges of a work area that it is held at, and its distances from these. The
// compositor knows better than we where the work area is, so a frame in ours comes out right in its own.
struct LayerPlacement {
    std::uint32_t anchors = 0; // ZWLR_LAYER_SURFACE_V1_ANCHOR_...
    QMargins margins;          // Zero at the edges that do not hold it.

    bool operator==(const LayerPlacement &) const = default;
};

// Where a work area of the size `usable` is on the screen `whole`, of which bars take the rest: beside the click that
// one of them was given, or below a bar at the top.
[[nodiscard]] QRect workAreaBeside(const std::optional<QPoint> &click, const QRect &whole, QSize usable);

// Holds `frame` at the edges of `workArea` that are nearest to it.
[[nodiscard]] LayerPlacement layerPlacement(const QRect &frame, const QRect &workArea);
