#pragma once

#include <VelmoraPlatform/DefaultsStore.h>
#include <VelmoraPlatform/DelayedSteps.h>
#include <VelmoraPlatform/WallClock.h>

#include <chrono>
#include <functional>
#include <optional>

// When to check for updates automatically.
//
// At the first launch nothing happens; at the second the user is asked, and nothing is checked before the answer.
// From then on a check is due one interval after the last one, whether that was scheduled or requested. The time of
// the last check is stored in wall-clock time, so time in suspend or switched off counts.
class UpdateSchedule {
public:
    struct Actions {
        std::function<void()> askPermission;
        std::function<void()> check;
    };

    struct Settings {
        std::chrono::seconds interval = std::chrono::days(1); // Raised to an hour when smaller.
        std::optional<bool> fixedAnswer;                      // Set: the question is never asked.
    };

    UpdateSchedule(DefaultsStore &defaults, Scheduler &scheduler, const WallClock &clock, Settings settings,
                   Actions actions);

    // Once, at launch. Runs no action before the event loop does.
    void start();
    // The user's answer to `askPermission`.
    void setPermission(bool granted);
    // A check has begun, by schedule or by the user: the next one is due an interval from now.
    void noteCheck();

private:
    void arm();
    [[nodiscard]] std::chrono::milliseconds untilDue() const;
    [[nodiscard]] std::optional<bool> permission() const;

    DefaultsStore &defaults_;
    const WallClock &clock_;
    Settings settings_;
    Actions actions_;
    DelayedSteps steps_; // Only the latest plan counts.
};
