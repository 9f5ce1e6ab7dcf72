#pragma once

#include <QMargins>
#include <QRect>

#include <cstdint>

// Where a surface of the layer shell is: the edges of a work area that it is held at, and its distances from these. The
// compositor knows better than we where the work area is, so a frame in ours comes out right in its own.
struct LayerPlacement {
    std::uint32_t anchors = 0; // ZWLR_LAYER_SURFACE_V1_ANCHOR_...
    QMargins margins;          // Zero at the edges that do not hold it.

    bool operator==(const LayerPlacement &) const = default;
};

// Holds `frame` at the edges of `workArea` that are nearest to it.
[[nodiscard]] LayerPlacement layerPlacement(const QRect &frame, const QRect &workArea);
