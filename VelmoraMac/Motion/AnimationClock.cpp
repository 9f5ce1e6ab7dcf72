#include "AnimationClock.h"

#include <VelmoraMac/StyleKit/EngineSingleton.h>

#include <QAbstractAnimation>

#include <algorithm>
#include <utility>

using namespace std::chrono_literals;

// Ticks with Qt's animation timer, so that all changes of a tick are drawn in one frame.
class AnimationClock::Driver : public QAbstractAnimation {
public:
    explicit Driver(AnimationClock &clock)
        : clock_(clock)
    {
    }

    [[nodiscard]] int duration() const override { return -1; }

protected:
    void updateCurrentTime(int) override
    {
        if (state() == Running)
            clock_.advance(clock_.now());
    }

private:
    AnimationClock &clock_;
};

AnimationClock::AnimationClock(QObject *parent)
    : QObject(parent)
    , driver_(std::make_unique<Driver>(*this))
{
    timer_.start();
}

AnimationClock::~AnimationClock() = default;

AnimationClock *AnimationClock::in(QQmlEngine &engine)
{
    return engineSingleton<AnimationClock>(engine, "AnimationClock");
}

AnimationClock *AnimationClock::of(const QObject *item)
{
    QQmlEngine *engine = qmlEngine(item);
    return engine != nullptr ? in(*engine) : nullptr;
}

std::chrono::nanoseconds AnimationClock::now() const
{
    if (isVirtual_ || runsDue_)
        return virtualNow_;
    return std::chrono::nanoseconds(timer_.nsecsElapsed());
}

double AnimationClock::seconds() const
{
    return std::chrono::duration<double>(now()).count();
}

void AnimationClock::after(std::chrono::nanoseconds delay, Step step)
{
    const auto due = now() + std::max(delay, std::chrono::nanoseconds(0));
    const auto place = std::upper_bound(waiting_.begin(), waiting_.end(), due,
                                        [](auto moment, const Waiting &other) { return moment < other.due; });
    waiting_.insert(place, {due, std::move(step)});
    runOrRest();
}

void AnimationClock::setVirtual()
{
    virtualNow_ = now();
    isVirtual_ = true;
    driver_->stop();
}

void AnimationClock::setReal()
{
    isVirtual_ = false;
    runOrRest();
}

void AnimationClock::pass(std::chrono::nanoseconds time)
{
    Q_ASSERT(isVirtual_);
    advance(virtualNow_ + time);
}

void AnimationClock::setMoving(const QObject *mover, bool moving)
{
    const auto place = std::find(movers_.begin(), movers_.end(), mover);
    if (moving && place == movers_.end())
        movers_.push_back(mover);
    else if (!moving && place != movers_.end())
        movers_.erase(place);
    runOrRest();
}

void AnimationClock::advance(std::chrono::nanoseconds moment)
{
    runDue(moment);
    virtualNow_ = moment;
    Q_EMIT ticked();
    runOrRest();
}

void AnimationClock::runDue(std::chrono::nanoseconds moment)
{
    runsDue_ = true;
    while (!waiting_.empty() && waiting_.front().due <= moment) {
        const Waiting next = std::move(waiting_.front());
        waiting_.erase(waiting_.begin());
        virtualNow_ = next.due;
        next.step();
    }
    runsDue_ = false;
}

void AnimationClock::runOrRest()
{
    if (isVirtual_)
        return;
    const bool runs = driver_->state() == QAbstractAnimation::Running;
    const bool wanted = !waiting_.empty() || !movers_.empty();
    if (wanted && !runs)
        driver_->start();
    else if (!wanted && runs && !runsDue_)
        driver_->stop();
}
