#pragma once

#include <QPoint>
#include <QRect>

#include <optional>

// Working out where a status icon is from what its host says about a click.

struct ScreenFrame {
    QRect whole;
    QRect workArea; // What the desktop's panels leave.
};

// Whether a host's coordinates can be those of a click: some hosts count from the icon's corner or send
// zeros.
[[nodiscard]] bool tellsPlace(QPoint hint, const std::optional<ScreenFrame> &screenOfHint);

// The icon's surroundings: the panel's whole thickness where the click lies in a panel, else just the point.
[[nodiscard]] QRect anchorAround(QPoint click, const ScreenFrame &screen);

// Where a tip of `size` stands that explains `icon`: beside it, inside the work area.
[[nodiscard]] QRect tipFrame(const QRect &icon, const QRect &workArea, QSize size);

// The end of the desktop's panel where status icons usually are; the top right without any panel.
[[nodiscard]] QRect likelyAnchor(const ScreenFrame &screen);
