#pragma once

#include "ScreenCover.h"
#include "WaylandOutputs.h"

#include <functional>
#include <list>

// Tells of presses where no window is. Nobody else does: a compositor takes them for itself. Below everything else that
// can be clicked lies an unseen surface on each screen; a desktop with icons of its own that is on the lowest layer, too,
// does not see a press that is told here.
class BareDesktop {
public:
    // `pressed` may destroy this object. Nothing is told where the compositor does not offer what it takes.
    BareDesktop(const LayerShell &shell, const WaylandOutputs &outputs, SeatInput &seat,
                std::function<void()> pressed);
    ~BareDesktop();
    Q_DISABLE_COPY_MOVE(BareDesktop)

    // Screens have come or gone.
    void followScreens();

private:
    void cover(wl_output *screen);

    const LayerShell &shell_;
    const WaylandOutputs &outputs_;
    SeatInput &seat_;
    std::function<void()> pressed_;
    std::list<ScreenCover> covers_;
};
