#include "TransferDeadline.h"

#include <algorithm>
#include <utility>

TransferDeadline::TransferDeadline(Scheduler &scheduler, const TransferLimits &limits,
                                   std::function<void()> expired)
    : scheduler_(scheduler)
    , silence_(limits.silence)
    , end_(scheduler.now() + limits.total)
    , lastProgress_(scheduler.now())
    , expired_(std::move(expired))
    , steps_(scheduler)
{
    watch(std::min(limits.silence, limits.total));
}

void TransferDeadline::watch(std::chrono::nanoseconds delay)
{
    steps_.after(delay, [this] {
        const auto left = std::min(lastProgress_ + silence_, end_) - scheduler_.now();
        if (left > std::chrono::nanoseconds::zero())
            return watch(left);
        // The last thing done here: it may destroy this object.
        const auto expired = std::exchange(expired_, nullptr);
        expired();
    });
}
