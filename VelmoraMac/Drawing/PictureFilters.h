#pragma once

#include <QImage>

// Filters on small pictures with premultiplied pixels (QImage::Format_ARGB32_Premultiplied).
namespace PictureFilters {

// `picture` under a Gaussian blur of `sigma` pixels; edges fade outwards as far as the picture has room for them.
// Large blurs are computed and returned at a fraction of the size: stretch the result over the picture's place.
[[nodiscard]] QImage blurred(const QImage &picture, double sigma);

} // namespace PictureFilters
