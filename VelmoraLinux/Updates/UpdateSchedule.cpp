#include "UpdateSchedule.h"

using namespace std::chrono_literals;

namespace {

constexpr QStringView launchedBeforeKey = u"SUHasLaunchedBefore";
constexpr QStringView automaticChecksKey = u"SUEnableAutomaticChecks";
constexpr QStringView lastCheckTimeKey = u"SULastCheckTime"; // Milliseconds since 1970, UTC.

// The steady clock stops during suspend, so the wall clock is read at this interval.
constexpr std::chrono::milliseconds recheckInterval = 30min;

} // namespace

UpdateSchedule::UpdateSchedule(DefaultsStore &defaults, Scheduler &scheduler, const WallClock &clock,
                               Settings settings, Actions actions)
    : defaults_(defaults)
    , clock_(clock)
    , settings_(settings)
    , actions_(std::move(actions))
    , steps_(scheduler)
{
    settings_.interval = std::max<std::chrono::seconds>(settings_.interval, 1h);
}

void UpdateSchedule::start()
{
    const bool launchedBefore = defaults_.boolean(launchedBeforeKey).value_or(false);
    if (!launchedBefore)
        defaults_.setBoolean(launchedBeforeKey, true);
    if (permission().value_or(false))
        arm();
    else if (!permission().has_value() && launchedBefore)
        steps_.after(0s, [this] { actions_.askPermission(); });
}

void UpdateSchedule::setPermission(bool granted)
{
    defaults_.setBoolean(automaticChecksKey, granted);
    arm();
}

void UpdateSchedule::noteCheck()
{
    defaults_.setInteger(lastCheckTimeKey, clock_.now().toMSecsSinceEpoch());
    arm();
}

std::optional<bool> UpdateSchedule::permission() const
{
    return settings_.fixedAnswer ? settings_.fixedAnswer : defaults_.boolean(automaticChecksKey);
}

std::chrono::milliseconds UpdateSchedule::untilDue() const
{
    const auto last = defaults_.integer(lastCheckTimeKey);
    if (!last)
        return 0ms;
    const std::chrono::milliseconds interval = settings_.interval;
    const std::chrono::milliseconds passed{clock_.now().toMSecsSinceEpoch() - *last};
    if (passed < 0ms) // The clock was set back: the last check counts as just done.
        return interval;
    return std::max(interval - passed, 0ms);
}

void UpdateSchedule::arm()
{
    steps_.startOver();
    if (!permission().value_or(false))
        return;
    steps_.after(std::min(untilDue(), recheckInterval), [this] {
        if (untilDue() > 0ms) {
            arm();
            return;
        }
        noteCheck();
        actions_.check();
    });
}
