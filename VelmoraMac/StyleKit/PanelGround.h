#pragma once

#include <VelmoraMac/VelmoraThemePalette.h>

#include <QColor>
#include <QList>

// The visible colours of the popover's panel: a theme's gradient on its material, under its scrim.
namespace PanelGround {

// The material under a theme's gradient. Opaque.
[[nodiscard]] QColor material(const VelmoraThemePalette &palette);

// `gradient`, an opaque colour, covering `material` with the opacity `cover`, `down` from 0 at the top to 1
// at the bottom. The scrim is more opaque towards the bottom, where the themes' gradients are brightest and
// the texts smallest.
[[nodiscard]] QColor colorAt(const QColor &gradient, double down, const QColor &scrim, double cover,
                             const QColor &material);

// The backgrounds of the texts on the panel's cards, from top to bottom.
[[nodiscard]] QList<QColor> behindCards(const VelmoraThemePalette &palette);

} // namespace PanelGround
