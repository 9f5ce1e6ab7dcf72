#pragma once

#include <VelmoraPlatform/StatusItem.h>

// Shows the status item's menu where the desktop does not.
class MenuPresenter {
public:
    virtual ~MenuPresenter() = default;
    // Shows `menu` beside `anchor` with no entry selected; it closes by itself. Widths in points.
    virtual void popUp(const StatusMenu &menu, const QRect &anchor, int minimumWidth) = 0;
    // Harmless when no menu is open.
    virtual void dismiss() = 0;
};
