#pragma once

#include <VelmoraMac/VelmoraThemePalette.h>

#include <QColor>
#include <QList>

// The colours of the popover's panel as they are seen: a theme's gradient on its material, under its scrim.
namespace PanelGround {

// The material under a theme's gradient. Opaque.
[[nodiscard]] QColor material(const VelmoraThemePalette &palette);

// `gradient`, an opaque colour, covering `material` with the opacity `cover`, `down` from 0 at the top to 1
// at the bottom. The scrim grows denser downwards, where the gradients of the themes shine most and texts are
// smallest.
[[nodiscard]] QColor colorAt(const QColor &gradient, double down, const QColor &scrim, double cover,
                             const QColor &material);

// What lies behind the texts of the panel's cards, from top to bottom.
[[nodiscard]] QList<QColor> behindCards(const VelmoraThemePalette &palette);

} // namespace PanelGround
