#pragma once

#include <QColor>
#include <QImage>

// `pixels` x `pixels`: the alpha of `templateImage` filled with `color`, the whole at `opacity`. A faint edge
// in the opposite brightness keeps it readable on a panel whose colour nobody tells us.
[[nodiscard]] QImage paintStatusIcon(const QImage &templateImage, int pixels, const QColor &color,
                                     double opacity);
