#pragma once

#include <VelmoraMac/State/AppTypes.h>

// Opens the settings window. Its users hold a weak pointer.
class AppWindowPresenting {
public:
    virtual ~AppWindowPresenting() = default;
    virtual void showAppWindow(AppTab tab) = 0;
};
