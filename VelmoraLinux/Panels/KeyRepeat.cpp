#include "KeyRepeat.h"

#include <algorithm>
#include <utility>

KeyRepeat::KeyRepeat(Action again)
    : again_(std::move(again))
{
    timer_.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { repeat(); });
}

void KeyRepeat::setPace(int timesPerSecond, std::chrono::milliseconds delay)
{
    timesPerSecond_ = timesPerSecond;
    delay_ = delay;
    if (timesPerSecond_ <= 0)
        stop();
}

void KeyRepeat::press(std::uint32_t code)
{
    if (timesPerSecond_ <= 0)
        return;
    held_ = code;
    timer_.start(delay_);
}

void KeyRepeat::release(std::uint32_t code)
{
    if (held_ == code)
        stop();
}

void KeyRepeat::stop()
{
    held_.reset();
    timer_.stop();
}

void KeyRepeat::repeat()
{
    using namespace std::chrono_literals;
    if (!held_)
        return;
    timer_.start(std::max(1ms, 1000ms / timesPerSecond_));
    again_(*held_);
}
