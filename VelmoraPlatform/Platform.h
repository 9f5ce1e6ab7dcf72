#pragma once

#include "Appearance.h"
#include "ApplicationInstance.h"
#include "BundleInfo.h"
#include "DefaultsStore.h"
#include "HttpsClient.h"
#include "LoginItem.h"
#include "PanelSurfaces.h"
#include "Pasteboard.h"
#include "PointerMonitor.h"
#include "Scheduler.h"
#include "Screens.h"
#include "StatusItem.h"
#include "SystemLanguage.h"
#include "Updater.h"
#include "UserNotifications.h"
#include "WallClock.h"
#include "WindowManager.h"

#include <functional>

// Everything the application needs of a desktop. All of it outlives the application.
struct Platform {
    const BundleInfo &bundle;
    DefaultsStore &defaults;
    Pasteboard &pasteboard;
    Scheduler &scheduler;
    const WallClock &clock;
    const SystemLanguage &language;
    HttpsClient &https;
    LoginItem &loginItem;
    UpdaterFactory makeUpdater;

    ApplicationInstance &instance; // Claimed: this process is the first.
    StatusItem &statusItem;
    WindowManager &windows;
    PointerMonitor &pointer;
    const Screens &screens;
    Appearance &appearance;
    UserNotifications &notifications;

    // Null where panels are always windows.
    PanelSurfaces *panelSurfaces = nullptr;

    // Called when the application has just freed much memory.
    std::function<void()> releaseMemory = [] {};
};
