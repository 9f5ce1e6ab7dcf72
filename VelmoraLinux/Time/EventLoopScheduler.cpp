#include "EventLoopScheduler.h"

#include <algorithm>
#include <utility>
#include <vector>

EventLoopScheduler::EventLoopScheduler()
{
    timer_.setSingleShot(true);
    timer_.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { runDueSteps(); });
}

std::chrono::nanoseconds EventLoopScheduler::now() const
{
    return std::chrono::steady_clock::now().time_since_epoch();
}

void EventLoopScheduler::after(std::chrono::nanoseconds delay, Step step)
{
    const auto due = now() + std::max(delay, std::chrono::nanoseconds::zero());
    const auto place = steps_.emplace(Deadline(due, nextNumber_++), std::move(step)).first;
    if (place == steps_.begin())
        armTimer();
}

void EventLoopScheduler::runDueSteps()
{
    // Steps scheduled by these steps run in the next round, so that the event loop is never starved.
    const auto firstNotDue = steps_.upper_bound(Deadline(now(), nextNumber_));
    std::vector<Step> due;
    for (auto step = steps_.begin(); step != firstNotDue; step = steps_.erase(step))
        due.push_back(std::move(step->second));
    armTimer();
    for (const Step &step : due)
        step();
}

void EventLoopScheduler::armTimer()
{
    if (steps_.empty())
        return;
    const auto wait = std::max(steps_.begin()->first.first - now(), std::chrono::nanoseconds::zero());
    timer_.start(std::chrono::ceil<std::chrono::milliseconds>(wait));
}
