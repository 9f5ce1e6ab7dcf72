#pragma once

#include <QColor>
#include <QList>

// The contrast of a text and its background, as the Web Content Accessibility Guidelines (WCAG 2) define it.
namespace Contrast {

// The ratios that level AA asks for.
inline constexpr double smallText = 4.5;
inline constexpr double largeText = 3;
inline constexpr double graphics = 3;
// Those of level AAA.
inline constexpr double smallTextEnhanced = 7;
inline constexpr double largeTextEnhanced = 4.5;

// A translucent `upper` blended over an opaque `ground` (source over).
[[nodiscard]] QColor over(const QColor &upper, const QColor &ground);

// From 1 (the same) to 21 (black on white). `text` may be translucent, `ground` is opaque.
[[nodiscard]] double ratio(const QColor &text, const QColor &ground);

// `text`, or the nearest darker or lighter and more opaque shade of it whose ratio reaches `wanted` on each of
// `grounds`; black or white where none does.
[[nodiscard]] QColor legible(const QColor &text, const QList<QColor> &grounds, double wanted);

} // namespace Contrast
