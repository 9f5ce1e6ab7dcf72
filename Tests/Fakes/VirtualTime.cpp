#include "VirtualTime.h"

#include <algorithm>
#include <utility>

void VirtualTime::after(std::chrono::nanoseconds delay, Step step)
{
    steps_.emplace(now_ + std::max(delay, std::chrono::nanoseconds(0)), std::move(step));
}

void VirtualTime::pass(std::chrono::nanoseconds duration)
{
    const std::chrono::nanoseconds end = now_ + duration;
    while (!steps_.empty() && steps_.begin()->first <= end) {
        const auto first = steps_.extract(steps_.begin());
        moveTo(first.key());
        first.mapped()();
    }
    moveTo(end);
}

void VirtualTime::moveTo(std::chrono::nanoseconds moment)
{
    using std::chrono::duration_cast;
    using std::chrono::milliseconds;
    const milliseconds passed = duration_cast<milliseconds>(moment) - duration_cast<milliseconds>(now_);
    wallClock_.set(wallClock_.now().addMSecs(passed.count()));
    now_ = moment;
}
