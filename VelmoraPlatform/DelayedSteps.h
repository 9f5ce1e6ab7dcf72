#pragma once

#include <VelmoraPlatform/Scheduler.h>

#include <chrono>
#include <functional>
#include <memory>
#include <utility>

// Steps that run later, in rounds. Starting over cancels every step of the round before; destroying this
// object cancels all of them. A step may destroy it.
//
// A member of this type also cancels late replies: hand others a `guarded` handler.
class DelayedSteps {
public:
    explicit DelayedSteps(Scheduler &scheduler)
        : scheduler_(scheduler)
    {
    }

    DelayedSteps(const DelayedSteps &) = delete;
    DelayedSteps &operator=(const DelayedSteps &) = delete;

    void startOver() { generation_ = std::make_shared<char>(); }

    // `callable` with the same arguments, which does nothing after startOver() and after the end of this object.
    template<typename Callable>
    [[nodiscard]] auto guarded(Callable callable) const
    {
        return [round = std::weak_ptr(generation_), callable = std::move(callable)](auto &&...arguments) {
            if (!round.expired())
                callable(std::forward<decltype(arguments)>(arguments)...);
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
