#pragma once

#include <VelmoraMac/VelmoraThemePalette.h>

#include <QColor>
#include <QList>

// The visible colours of the popover's panel: a theme's gradient under its scrim, and the cards on it.
//
// What is behind the window is not blurred by the desktop; the material under the gradient is the gradient itself.
namespace PanelGround {

// The contrast that texts of a theme are to have: of level AA, of level AAA where it is increased.
[[nodiscard]] double smallText(const VelmoraThemePalette &palette);
[[nodiscard]] double largeText(const VelmoraThemePalette &palette);

// An opaque colour of the gradient under `scrim`.
[[nodiscard]] QColor colorAt(const QColor &gradient, const QColor &scrim);

// The panel behind its cards, from top to bottom, with and without its glows.
[[nodiscard]] QList<QColor> panel(const VelmoraThemePalette &palette);

// The fill of a card: the theme's, over as much shade as the theme's texts need to be read on the brightest part
// of the panel (on the darkest in a light theme), but never more than a third; where the contrast is increased,
// than four fifths.
[[nodiscard]] QColor card(const VelmoraThemePalette &palette);

// The shade of the seal: dark, in a light theme white.
[[nodiscard]] QColor sealShade(const VelmoraThemePalette &palette);

// The backgrounds of the texts on the panel's cards, from top to bottom.
[[nodiscard]] QList<QColor> behindCards(const VelmoraThemePalette &palette);

} // namespace PanelGround
