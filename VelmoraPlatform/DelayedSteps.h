#pragma once

#include <VelmoraPlatform/Scheduler.h>

#include <chrono>
#include <functional>
#include <memory>
#include <utility>

// Steps that run later, in rounds. Starting over silences every step of the round before; destroying this
// object silences all of them. A step may destroy it.
class DelayedSteps {
public:
    explicit DelayedSteps(Scheduler &scheduler)
        : scheduler_(scheduler)
    {
    }

    DelayedSteps(const DelayedSteps &) = delete;
    DelayedSteps &operator=(const DelayedSteps &) = delete;

    void startOver() { generation_ = std::make_shared<char>(); }

    void after(std::chrono::nanoseconds delay, Scheduler::Step step)
    {
        scheduler_.after(delay, [round = std::weak_ptr(generation_), step = std::move(step)] {
            if (!round.expired())
                step();
        });
    }

private:
    Scheduler &scheduler_;
    std::shared_ptr<char> generation_ = std::make_shared<char>();
};
