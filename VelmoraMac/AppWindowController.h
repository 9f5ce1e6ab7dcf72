#pragma once

#include "AppState.h"
#include "UpdateController.h"

#include <VelmoraMac/Shell/AppWindow.h>
#include <VelmoraMac/Shell/NotificationCenter.h>

#include <memory>

// The settings window: made when it is first wanted, then kept with its place and state.
class AppWindowController {
public:
    AppWindowController(AppState &appState, UpdateController &updateController, AppWindowFactory &windows,
                        NotificationCenter &notifications);

    // Brings the window to the front, above the application in use.
    void show();

private:
    [[nodiscard]] std::unique_ptr<AppWindow> makeWindow();

    AppState &appState_;
    UpdateController &updateController_;
    AppWindowFactory &windows_;
    NotificationCenter &notifications_;
    std::unique_ptr<AppWindow> window_;
};
