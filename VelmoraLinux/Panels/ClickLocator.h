#pragma once

#include "LayerShell.h"
#include "ScreenCover.h"
#include "SeatInput.h"
#include "WaylandOutputs.h"

#include <VelmoraPlatform/DelayedSteps.h>

#include <QPoint>

#include <functional>
#include <list>
#include <optional>

class QEvent;

// Finds out what a Wayland compositor does not tell by itself: how large each screen's work area is, and where the
// pointer is. For the moment that this takes, a surface that is never shown is measured on each screen, and one that
// nobody can see covers it.
class ClickLocator {
public:
    // The pointer in the points of all screens; nothing when it was not asked for or did not become known in time.
    using Handler = std::function<void(std::optional<QPoint> pointer)>;
    enum class Wanted { workAreas, workAreasAndPointer };

    ClickLocator(const LayerShell &shell, WaylandOutputs &outputs, SeatInput &seat, Scheduler &scheduler);
    ~ClickLocator();
    Q_DISABLE_COPY_MOVE(ClickLocator)

    // `done` runs once, in the event loop. A second request replaces the first.
    void locate(Wanted wanted, Handler done);

private:
    void measure(wl_output *output);
    void cover(wl_output *output);
    void notice(const wl_output *output, const QEvent &event);
    void finishWhenKnown();
    void finish();
    void uncover();

    const LayerShell &shell_;
    WaylandOutputs &outputs_;
    SeatInput &seat_;
    Handler done_;
    Wanted wanted_ = Wanted::workAreas;
    std::optional<QPoint> pointer_;
    std::list<ScreenCover> covers_;
    DelayedSteps steps_;
};
