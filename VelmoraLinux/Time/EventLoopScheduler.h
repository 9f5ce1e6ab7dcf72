#pragma once

#include <VelmoraPlatform/Scheduler.h>

#include <QTimer>
#include <queue>

#include <vector>

// Runs steps in Qt's event loop of the thread that created it, exact to the millisecond. The loop is woken
// only when a step is due.
class EventLoopScheduler final : public Scheduler {
public:
    EventLoopScheduler();

    [[nodiscard]] std::chrono::nanoseconds now() const override;
    void after(std::chrono::nanoseconds delay, Step step) override;

private:
    // When a step is due, and its number in the order of the calls.
    using Deadline = std::pair<std::chrono::nanoseconds, quint64>;

    void runDueSteps();
    void armTimer();

    std::map<Deadline, Step> steps_;
    quint64 nextNumber_ = 0;
    QTimer timer_;
};
