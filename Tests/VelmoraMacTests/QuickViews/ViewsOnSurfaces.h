#pragma once

#include <VelmoraMac/QuickViews/QuickViews.h>

#include <Fakes/FakeDesktop.h>
#include <Fakes/FakePanelSurfaces.h>
#include <Fakes/FakeSurroundings.h>
#include <Fakes/VirtualTime.h>

// Views on a desktop of fakes whose shell offers panels.
struct ViewsOnSurfaces {
    PlainWindowManager windows;
    FakeScreens screens;
    PlainAppearance appearance;
    FakePanelSurfaces surfaces;
    VirtualTime time;
    QuickViews views{{.windows = windows,
                      .screens = screens,
                      .scheduler = time,
                      .appearance = appearance,
                      .releaseMemory = [] {},
                      .surfaces = &surfaces}};

    // The latest panel.
    [[nodiscard]] FakePanelSurfaces::Record &shown() const { return *surfaces.records.back(); }

    void input(QEvent &&event) const { shown().handlers.input(event); }
};
