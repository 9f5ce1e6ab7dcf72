#pragma once

#include <chrono>
#include <functional>

// The application's time: a steady clock and steps that run later on the main thread.
//
// The program drives it with the event loop; tests use virtual time.
class Scheduler {
public:
    using Step = std::function<void()>;

    virtual ~Scheduler() = default;
    // Steady time since an arbitrary start; never goes back.
    [[nodiscard]] virtual std::chrono::nanoseconds now() const = 0;
    // Runs `step` once on the main thread, not earlier than `delay` from now. Steps due at the same moment
    // run in the order of the calls. A step cannot be cancelled: see DelayedSteps for that.
    virtual void after(std::chrono::nanoseconds delay, Step step) = 0;
};
