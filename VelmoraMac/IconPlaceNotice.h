#pragma once

#include "AppState.h"

#include <VelmoraPlatform/DelayedSteps.h>
#include <VelmoraPlatform/StatusItem.h>
#include <VelmoraPlatform/UserNotifications.h>

#include <functional>

// Tells the user once that the program runs when the desktop shows no status icons, and how to reach it then.
class IconPlaceNotice {
public:
    // All outlive this object.
    struct Dependencies {
        const AppState &appState; // For its language.
        const StatusItem &statusItem;
        UserNotifications &notifications;
        Scheduler &scheduler;
        std::function<void()> openSettings;
    };

    // Looks after a while: panels may start later than this program.
    explicit IconPlaceNotice(Dependencies dependencies);

private:
    void look();
    [[nodiscard]] QString t(const QString &english, const QString &german) const;

    Dependencies dependencies_;
    DelayedSteps steps_;
};
