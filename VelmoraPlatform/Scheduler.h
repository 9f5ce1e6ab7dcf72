#pragma once

#include <chrono>
#include <functional>

// Time as the application sees it: a steady clock and steps that run later on the main thread.
//
// Production drives it with the event loop; tests move it by hand.
class Scheduler {
public:
    using Step = std::function<void()>;

    virtual ~Scheduler() = default;
    // Steady time since an arbitrary start; never goes back.
    [[nodiscard]] virtual std::chrono::nanoseconds now() const = 0;
    // Runs `step` once on the main thread, not earlier than `delay` from now. Steps due at the same moment
    // run in the order in which they were asked for. A step cannot be taken back: see DelayedSteps for that.
    virtual void after(std::chrono::nanoseconds delay, Step step) = 0;
};
