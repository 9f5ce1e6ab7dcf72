#pragma once

#include <VelmoraPlatform/Scheduler.h>

#include <chrono>
#include <functional>
#include <memory>
#include <utility>

// Steps that run later, in rounds. Starting over cancels every step of the round before; destroying this
// object cancels all of them. A step may destroy it.
class DelayedSteps {
public:
    explicit DelayedSteps(Scheduler &scheduler)
        : scheduler_(scheduler)
    {
    }

    DelayedSteps(const DelayedSteps &) = delete;
    DelayedSteps &operator=(const DelayedSteps &) = delete;

    void startOver() { generation_ = std::make_shared<char>(); }

    // For late replies: calls `action` as long as the present round lasts, and does nothing afterwards.
    template<typename Action>
    [[nodiscard]] auto guarded(Action action) const
    {
        return [round = std::weak_ptr(generation_), action = std::move(action)](auto &&...arguments) {
            if (!round.expired())
                action(std::forward<decltype(arguments)>(arguments)...);
        };
    }

    void after(std::chrono::nanoseconds delay, Scheduler::Step step)
    {
        scheduler_.after(delay, guarded(std::move(step)));
    }

private:
    Scheduler &scheduler_;
    std::shared_ptr<char> generation_ = std::make_shared<char>();
};
