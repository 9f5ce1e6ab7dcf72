#pragma once

#include "TransferLimits.h"

#include <VelmoraPlatform/DelayedSteps.h>
#include <VelmoraPlatform/Scheduler.h>

#include <chrono>
#include <functional>

// Ends one transfer that makes no progress, or lasts longer, than its limits allow.
class TransferDeadline {
public:
    // The transfer begins now. `expired` is called once, from the event loop, and may destroy this object.
    TransferDeadline(Scheduler &scheduler, const TransferLimits &limits, std::function<void()> expired);

    void noteProgress() { lastProgress_ = scheduler_.now(); }

private:
    void watch(std::chrono::nanoseconds delay);

    Scheduler &scheduler_;
    std::chrono::nanoseconds silence_;
    std::chrono::nanoseconds end_;
    std::chrono::nanoseconds lastProgress_;
    std::function<void()> expired_;
    DelayedSteps steps_;
};
