#pragma once

#include <QColor>
#include <QImage>

enum class IconEdge {
    none,        // The colour was chosen for the ground.
    contrasting, // The ground is not known: an outline of the opposite brightness shows the shape on any.
};

// Whether a light icon is easier to see on `ground` than a dark one.
[[nodiscard]] bool isDarkGround(const QColor &ground);

// An image of `pixels` x `pixels`: the alpha channel of `templateImage` filled with `color`, all of it at `opacity`.
[[nodiscard]] QImage paintStatusIcon(const QImage &templateImage, int pixels, const QColor &color,
                                     double opacity, IconEdge edge);
