#include "AppDelegate.h"

#include <utility>

using namespace std::chrono_literals;

AppDelegate::AppDelegate(Platform platform, Surface surface)
    : platform_(std::move(platform))
    , surface_(std::move(surface))
    , services_(platform_, surface_.telemetry, surface_.panels, surface_.windows)
{
}

void AppDelegate::applicationDidFinishLaunching()
{
    services_.clipboardMonitor().start(services_.appState());
    statusBarController_ = std::make_unique<StatusBarController>(
        services_.appState(), services_.updateController(), weak_from_this(),
        StatusBarController::Surface{platform_.statusItem, surface_.statusItemImage, surface_.panels,
                                     surface_.menus, platform_.pointer, platform_.screens,
                                     platform_.scheduler, surface_.telemetry, surface_.notifications,
                                     surface_.terminate});
    surface_.telemetry.trackFirstLaunchIfNeeded(services_.appState());
    surface_.telemetry.track(TelemetryEventName::appOpened, services_.appState());
}

void AppDelegate::applicationShouldHandleReopen()
{
    surface_.notifications.post(NotificationCenter::restoreMenuBarIcon());
    showAppWindow(AppTab::general);
}

void AppDelegate::applicationShouldTerminate()
{
    surface_.telemetry.track(TelemetryEventName::appQuit, services_.appState());
    // The end does not wait for it: what is left in the queue is sent after the next start.
    surface_.telemetry.scheduleFlush(200ms);
}

void AppDelegate::showAppWindow(AppTab tab)
{
    services_.appState().setActiveAppTab(tab);
    surface_.telemetry.track(TelemetryEventName::settingsOpened, services_.appState());
    if (!appWindowController_)
        appWindowController_ = std::make_unique<AppWindowController>(
            services_.appState(), services_.updateController(), surface_.windows, surface_.notifications);
    appWindowController_->show();
}
