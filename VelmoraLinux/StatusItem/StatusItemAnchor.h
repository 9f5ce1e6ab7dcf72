#pragma once

#include <QPoint>
#include <QRect>

#include <optional>

// Finds out where a status icon is, from the position that its host reports for a click.

struct ScreenFrame {
    QRect whole;
    QRect workArea; // Without the desktop's panels.
};

// Whether a host's coordinates can be the position of a click on the screen: some hosts count from the icon's
// corner or send zeros.
[[nodiscard]] bool isClickPosition(QPoint hint, const std::optional<ScreenFrame> &screenOfHint);

// Whether to believe the server's `pointer` and not the host's `hint`: hosts count in other units where the
// desktop is scaled. Not when the hint is in a panel and the pointer is not: the item was chosen by keyboard.
[[nodiscard]] bool isPointerOnIcon(const std::optional<ScreenFrame> &screenOfPointer,
                                   const std::optional<QPoint> &pointer,
                                   const std::optional<ScreenFrame> &screenOfHint, QPoint hint);

// The area to place a popover at: the panel's whole thickness when the click is in a panel, otherwise the point.
[[nodiscard]] QRect anchorAround(QPoint click, const ScreenFrame &screen);

// The frame of a tooltip of `size` for `icon`: beside the icon, inside the work area.
[[nodiscard]] QRect tipFrame(const QRect &icon, const QRect &workArea, QSize size);

// Where status icons usually are: at the end of the desktop's panel, or at the top right without a panel.
[[nodiscard]] QRect fallbackAnchor(const ScreenFrame &screen);
