#include "AppDelegate.h"

#include <utility>

using namespace std::chrono_literals;

AppDelegate::AppDelegate(Platform platform, Dependencies dependencies)
    : platform_(std::move(platform))
    , dependencies_(std::move(dependencies))
    , services_(platform_, dependencies_.telemetry, dependencies_.panels, dependencies_.windows)
{
}

void AppDelegate::applicationDidFinishLaunching()
{
    services_.clipboardMonitor().start(services_.appState());
    statusBarController_ = std::make_unique<StatusBarController>(
        services_.appState(), services_.updateController(), weak_from_this(),
        StatusBarController::Dependencies{.statusItem = platform_.statusItem,
                                          .templateImage = dependencies_.statusItemImage,
                                          .panels = dependencies_.panels,
                                          .menus = dependencies_.menus,
                                          .pointer = platform_.pointer,
                                          .screens = platform_.screens,
                                          .scheduler = platform_.scheduler,
                                          .telemetry = dependencies_.telemetry,
                                          .notifications = dependencies_.notifications,
                                          .terminate = dependencies_.terminate});
    dependencies_.telemetry.trackFirstLaunchIfNeeded(services_.appState());
    dependencies_.telemetry.track(TelemetryEventName::appOpened, services_.appState());
    iconPlaceNotice_ = std::make_unique<IconPlaceNotice>(
        IconPlaceNotice::Dependencies{.appState = services_.appState(),
                                      .statusItem = platform_.statusItem,
                                      .notifications = platform_.notifications,
                                      .scheduler = platform_.scheduler,
                                      .openSettings = [this] { showAppWindow(AppTab::general); }});
}

void AppDelegate::applicationShouldHandleReopen()
{
    dependencies_.notifications.post(NotificationCenter::restoreMenuBarIcon());
    showAppWindow(AppTab::general);
}

void AppDelegate::applicationShouldPerform(ApplicationInstance::Action action)
{
    AppState &state = services_.appState();
    switch (action) {
    case ApplicationInstance::Action::settings:
        showAppWindow(AppTab::general);
        break;
    case ApplicationInstance::Action::popover:
        statusBarController_->showPopoverForKeyboard();
        break;
    case ApplicationInstance::Action::cleanLink:
        services_.notices().acceptWarning();
        break;
    case ApplicationInstance::Action::pauseOrResume:
        state.setAutoCleanEnabled(!state.autoCleanEnabled());
        break;
    case ApplicationInstance::Action::quit:
        dependencies_.terminate();
        break;
    }
}

void AppDelegate::applicationShouldTerminate()
{
    dependencies_.telemetry.track(TelemetryEventName::appQuit, services_.appState());
    // The process does not wait for it: what stays in the queue is sent after the next start.
    dependencies_.telemetry.scheduleFlush(200ms);
}

void AppDelegate::showAppWindow(AppTab tab)
{
    services_.appState().setActiveAppTab(tab);
    dependencies_.telemetry.track(TelemetryEventName::settingsOpened, services_.appState());
    if (!appWindowController_)
        appWindowController_ = std::make_unique<AppWindowController>(
            services_.updateController(), dependencies_.windows, dependencies_.notifications);
    appWindowController_->show();
}
