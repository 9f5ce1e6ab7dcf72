#pragma once

#include <VelmoraMac/State/AppTypes.h>

// Opens the settings window. Held weakly by its users.
class AppWindowPresenting {
public:
    virtual ~AppWindowPresenting() = default;
    virtual void showAppWindow(AppTab tab) = 0;
};
