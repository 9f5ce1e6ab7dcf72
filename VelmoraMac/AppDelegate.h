#pragma once

#include "AppServices.h"
#include "AppWindowController.h"
#include "IconPlaceNotice.h"
#include "StatusBarController.h"
#include "TelemetryService.h"

#include <VelmoraMac/Shell/AppWindow.h>
#include <VelmoraMac/Shell/AppWindowPresenting.h>
#include <VelmoraMac/Shell/NotificationCenter.h>

#include <QImage>

#include <functional>
#include <memory>

// The application's life cycle: launch, re-opening, end; and its settings window.
//
// Owned by a shared pointer: objects that ask it for windows hold a weak one.
class AppDelegate final : public AppWindowPresenting, public std::enable_shared_from_this<AppDelegate> {
public:
    // All outlive the delegate.
    struct Dependencies {
        TelemetryService &telemetry;
        NotificationCenter &notifications;
        PanelFactory &panels;
        AppWindowFactory &windows;
        MenuPresenter &menus;
        QImage statusItemImage;
        std::function<void()> terminate; // Ends the application when the event loop gets to it.
    };

    // Makes the services: state, clipboard monitor, updates.
    AppDelegate(Platform platform, Dependencies dependencies);

    // Starts watching the clipboard and puts the status item on the desktop.
    void applicationDidFinishLaunching();
    // The user started the running application again.
    void applicationShouldHandleReopen();
    // The user chose an action of the running application, such as one of its desktop entry.
    void applicationShouldPerform(ApplicationInstance::Action action);
    // The process ends after this call.
    void applicationShouldTerminate();

    void showAppWindow(AppTab tab) override;

    [[nodiscard]] AppState &appState() { return services_.appState(); }

private:
    Platform platform_;
    Dependencies dependencies_;
    AppServices services_;
    std::unique_ptr<StatusBarController> statusBarController_;
    std::unique_ptr<AppWindowController> appWindowController_;
    std::unique_ptr<IconPlaceNotice> iconPlaceNotice_;
};
