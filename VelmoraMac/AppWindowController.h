#pragma once

#include "UpdateController.h"

#include <VelmoraMac/Shell/AppWindow.h>
#include <VelmoraMac/Shell/NotificationCenter.h>

#include <memory>

// The settings window: made on the first show, then kept with its position and state.
class AppWindowController {
public:
    AppWindowController(UpdateController &updateController, AppWindowFactory &windows,
                        NotificationCenter &notifications);

    // Brings the window to the front, above other applications.
    void show();

private:
    [[nodiscard]] std::unique_ptr<AppWindow> makeWindow();

    UpdateController &updateController_;
    AppWindowFactory &windows_;
    NotificationCenter &notifications_;
    std::unique_ptr<AppWindow> window_;
};
