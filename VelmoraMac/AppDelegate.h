#pragma once

#include "AppServices.h"
#include "AppWindowController.h"
#include "StatusBarController.h"
#include "TelemetryService.h"

#include <VelmoraMac/Shell/AppWindow.h>
#include <VelmoraMac/Shell/AppWindowPresenting.h>
#include <VelmoraMac/Shell/NotificationCenter.h>

#include <QImage>

#include <functional>
#include <memory>

// What happens when the application starts, is opened again and ends; opens its window.
//
// Belongs to a shared pointer: those who ask it for windows hold it weakly.
class AppDelegate final : public AppWindowPresenting, public std::enable_shared_from_this<AppDelegate> {
public:
    // What the delegate works with; all outlive it.
    struct Dependencies {
        TelemetryService &telemetry;
        NotificationCenter &notifications;
        PanelFactory &panels;
        AppWindowFactory &windows;
        MenuPresenter &menus;
        QImage statusItemImage;
        std::function<void()> terminate; // Ends the application in its own time.
    };

    // Makes the services: state, clipboard monitor, updates.
    AppDelegate(Platform platform, Dependencies dependencies);

    // Starts watching the clipboard and puts the status item on the desktop.
    void applicationDidFinishLaunching();
    // The user started the running application again.
    void applicationShouldHandleReopen();
    // The last moment: the process ends when this returns.
    void applicationShouldTerminate();

    void showAppWindow(AppTab tab) override;

private:
    Platform platform_;
    Dependencies dependencies_;
    AppServices services_;
    std::unique_ptr<StatusBarController> statusBarController_;
    std::unique_ptr<AppWindowController> appWindowController_;
};
