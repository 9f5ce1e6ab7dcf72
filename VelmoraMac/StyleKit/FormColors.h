#pragma once

#include <VelmoraMac/SystemColors.h>
#include <VelmoraMac/VelmoraThemePalette.h>

// The colours of forms, windows and menus in a theme.
namespace FormColors {

// The colours of `palette` where forms have them; of `system` the accents. Texts are legible on every surface.
[[nodiscard]] SystemColors of(const VelmoraThemePalette &palette, const SystemColors &system);

} // namespace FormColors
