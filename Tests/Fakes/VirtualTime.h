#pragma once

#include "UtcTime.h"

#include <VelmoraPlatform/Scheduler.h>
#include <VelmoraPlatform/WallClock.h>

#include <chrono>
#include <map>

// A wall clock that shows the time that was set.
class FakeWallClock final : public WallClock {
public:
    [[nodiscard]] QDateTime now() const override { return now_; }

    void set(const QDateTime &moment) { now_ = moment; }

private:
    QDateTime now_ = utcTime(QDate(2026, 3, 7), QTime(10, 11, 12));
};

// Time that advances only when a test advances it, together with the wall clock.
class VirtualTime final : public Scheduler {
public:
    [[nodiscard]] std::chrono::nanoseconds now() const override { return now_; }

    void after(std::chrono::nanoseconds delay, Step step) override;

    // Advances by `duration` and runs every step that becomes due, in order, each at its time.
    void pass(std::chrono::nanoseconds duration);

    // The number of pending steps: with zero the program would never be woken.
    [[nodiscard]] std::size_t waiting() const { return steps_.size(); }

    FakeWallClock &wallClock() { return wallClock_; }

private:
    void moveTo(std::chrono::nanoseconds moment);

    std::chrono::nanoseconds now_{0};
    std::multimap<std::chrono::nanoseconds, Step> steps_; // Equal moments keep the order of asking.
    FakeWallClock wallClock_;
};
