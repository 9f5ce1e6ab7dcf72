#pragma once

#include <QColor>
#include <QList>

// How well a text can be told from its ground, as the Web Content Accessibility Guidelines reckon it.
namespace Contrast {

// The colour that is seen where a translucent `upper` lies over an opaque `ground`.
[[nodiscard]] QColor over(const QColor &upper, const QColor &ground);

// From 1 (the same) to 21 (black on white). `text` may be translucent, `ground` is opaque.
[[nodiscard]] double ratio(const QColor &text, const QColor &ground);

// `text` itself, or the nearest shade of it, darker or lighter and denser, whose ratio reaches `wanted` on
// each of `grounds`; black or white where none does.
[[nodiscard]] QColor legible(const QColor &text, const QList<QColor> &grounds, double wanted);

} // namespace Contrast
