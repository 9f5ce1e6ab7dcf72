#include "LayerPlacement.h"

#include <layer-shell-client-header.h>

QRect workAreaBeside(const std::optional<QPoint> &click, const QRect &whole, QSize usable)
{
    QRect area(whole.topLeft(), usable.boundedTo(whole.size()));
    if (!click || click->y() <= whole.center().y())
        area.moveBottom(whole.bottom());
    if (!click || click->x() <= whole.center().x())
        area.moveRight(whole.right());
    return area;
}

LayerPlacement layerPlacement(const QRect &frame, const QRect &workArea)
{
    const QMargins distances(frame.left() - workArea.left(), frame.top() - workArea.top(),
                             workArea.right() - frame.right(), workArea.bottom() - frame.bottom());
    LayerPlacement placement;
    if (distances.left() < distances.right()) {
        placement.anchors |= ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT;
        placement.margins.setLeft(distances.left());
    } else {
        placement.anchors |= ZWLR_LAYER_SURFACE_V1_ANCHOR_RIGHT;
        placement.margins.setRight(distances.right());
    }
    if (distances.top() <= distances.bottom()) {
        placement.anchors |= ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP;
        placement.margins.setTop(distances.top());
    } else {
        placement.anchors |= ZWLR_LAYER_SURFACE_V1_ANCHOR_BOTTOM;
        placement.margins.setBottom(distances.bottom());
    }
    return placement;
}
