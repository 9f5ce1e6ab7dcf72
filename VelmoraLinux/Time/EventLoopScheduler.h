#pragma once

#include <VelmoraPlatform/Scheduler.h>

#include <QTimer>
#include <queue>

#include <vector>

// Time driven by Qt's event loop of the thread it was made in, exact to the millisecond. An idle loop is not
// woken.
class EventLoopScheduler final : public Scheduler {
public:
    EventLoopScheduler();

    [[nodiscard]] std::chrono::nanoseconds now() const override;
    void after(std::chrono::nanoseconds delay, Step step) override;

private:
    // The moment a step is due, and its number in the order of asking.
    using Appointment = std::pair<std::chrono::nanoseconds, quint64>;

    void runDueSteps();
    void armTimer();

    std::map<Appointment, Step> steps_;
    quint64 nextNumber_ = 0;
    QTimer timer_;
};
