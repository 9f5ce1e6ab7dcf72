#pragma once

#include <QColor>
#include <QImage>

// An image of `pixels` x `pixels`: the alpha channel of `templateImage` filled with `color`, all of it at `opacity`.
// A faint outline of the opposite brightness keeps it readable, because the panel's colour is not known.
[[nodiscard]] QImage paintStatusIcon(const QImage &templateImage, int pixels, const QColor &color,
                                     double opacity);
