#include "PictureFilters.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

constexpr size_t channels = 4;

// One box blur of width 2 * radius + 1 along every row, written transposed: two calls blur both ways.
void boxBlurTransposed(const QImage &from, QImage &to, int radius)
{
    const int width = from.width();
    const int height = from.height();
    constexpr int one = 1 << 16;
    const int part = one / (2 * radius + 1) + 1; // Of one: multiplied instead of divided by.
    for (int y = 0; y < height; ++y) {
        const uchar *row = from.constScanLine(y);
        const auto pixel = [row](int x) { return row + static_cast<size_t>(x) * channels; };
        std::array<int, channels> sum{};
        for (int x = 0; x < std::min(radius, width); ++x)
            for (size_t c = 0; c < channels; ++c)
                sum[c] += pixel(x)[c];
        uchar *out = to.bits() + static_cast<size_t>(y) * channels;
        for (int x = 0; x < width; ++x, out += to.bytesPerLine()) {
            const uchar *entering = x + radius < width ? pixel(x + radius) : nullptr;
            const uchar *leaving = x > radius ? pixel(x - radius - 1) : nullptr;
            for (size_t c = 0; c < channels; ++c) {
                sum[c] += (entering != nullptr ? entering[c] : 0) - (leaving != nullptr ? leaving[c] : 0);
                out[c] = static_cast<uchar>((sum[c] + radius) * part / one);
            }
        }
    }
}

// The radii of three box blurs that together approximate a Gaussian: see Kovesi, "Fast Almost-Gaussian Filtering".
std::array<int, 3> boxRadii(double sigma)
{
    constexpr int boxes = 3;
    const double ideal = std::sqrt(12 * sigma * sigma / boxes + 1);
    int narrow = static_cast<int>(ideal);
    narrow -= narrow % 2 == 0 ? 1 : 0;
    const double narrowBoxes =
        (12 * sigma * sigma - boxes * narrow * narrow - 4.0 * boxes * narrow - 3.0 * boxes) /
        (-4.0 * narrow - 4);
    std::array<int, boxes> radii{};
    for (int i = 0; auto &radius : radii)
        radius = (i++ < std::lround(narrowBoxes) ? narrow : narrow + 2) / 2;
    return radii;
}

} // namespace

QImage PictureFilters::blurred(const QImage &picture, double sigma)
{
    if (picture.isNull() || sigma < 0.3)
        return picture;
    const int fraction = sigma >= 4 ? 4 : (sigma >= 2.5 ? 2 : 1);
    QImage work = picture.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    if (fraction > 1) {
        const QSize size((work.width() + fraction - 1) / fraction, (work.height() + fraction - 1) / fraction);
        work = work.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    }
    QImage turned(work.height(), work.width(), work.format());
    for (const int radius : boxRadii(sigma / fraction)) {
        if (radius < 1)
            continue;
        boxBlurTransposed(work, turned, radius);
        boxBlurTransposed(turned, work, radius);
    }
    return work;
}
