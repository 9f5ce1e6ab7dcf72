#pragma once

#include <QPoint>
#include <QRect>

// The screens and their work areas (without the desktop's panels), in points with the origin at the top left.
class Screens {
public:
    virtual ~Screens() = default;
    // The work area of the main screen, else of the first one; an empty rectangle at the origin without any screen.
    [[nodiscard]] virtual QRect mainWorkArea() const = 0;
    // The work area of the screen that holds `point`; of the main screen when none does.
    [[nodiscard]] virtual QRect workAreaAt(QPoint point) const = 0;
};
