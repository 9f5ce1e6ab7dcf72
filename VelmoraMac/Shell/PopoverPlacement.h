#pragma once

#include <QRect>
#include <QSize>

// The frame of a popover of `size` for the icon at `anchor`: below it, centred, 8 points apart and 8 points
// inside the work area; for an icon at another edge of the screen on the side that faces the work area.
[[nodiscard]] QRect popoverFrame(const QRect &anchor, const QRect &workArea, QSize size);

// The same for a menu: at the icon's left edge, 4 points apart, inside the work area.
[[nodiscard]] QRect menuFrame(const QRect &anchor, const QRect &workArea, QSize size);
