#include "SpringValue.h"

#include "AnimationClock.h"

#include <VelmoraMac/StyleKit/Surroundings.h>

#include <algorithm>
#include <cmath>

namespace {
constexpr double shortFade = 0.12; // Seconds; in place of a spring where less motion is asked for.
}

SpringValue::SpringValue(QObject *parent)
    : QObject(parent)
{
}

SpringValue::~SpringValue()
{
    if (clock_)
        clock_->setMoving(this, false);
}

void SpringValue::componentComplete()
{
    complete_ = true;
    clock_ = AnimationClock::of(this);
    surroundings_ = Surroundings::of(this);
    if (clock_)
        connect(clock_, &AnimationClock::ticked, this, [this] {
            if (moving_)
                step();
        });
    take({to_, 0});
}

void SpringValue::setTo(double to)
{
    if (to_ == to)
        return;
    if (complete_ && clock_) {
        start_ = stateNow();
        to_ = to;
        begin();
    } else {
        to_ = to;
        take({to, 0});
    }
    Q_EMIT toChanged();
}

void SpringValue::setResponse(double response)
{
    setCurve({response, curve_.dampingFraction});
}

void SpringValue::setDampingFraction(double fraction)
{
    setCurve({curve_.response, fraction});
}

void SpringValue::jump(double to)
{
    const bool differs = to_ != to;
    to_ = to;
    setMoving(false);
    take({to, 0});
    if (differs)
        Q_EMIT toChanged();
}

void SpringValue::setCurve(const SpringCurve &curve)
{
    if (curve == curve_)
        return;
    if (moving_) {
        start_ = stateNow();
        startedAt_ = clock_->seconds();
    }
    curve_ = curve;
    Q_EMIT curveChanged();
}

void SpringValue::begin()
{
    startedAt_ = clock_->seconds();
    setMoving(true);
}

void SpringValue::step()
{
    const SpringCurve::State state = stateNow();
    if (SpringCurve::isAtRest(state, to_, to_ - start_.value)) {
        setMoving(false);
        take({to_, 0});
    } else {
        take(state);
    }
}

SpringCurve::State SpringValue::stateNow() const
{
    if (!moving_)
        return state_;
    const double seconds = clock_->seconds() - startedAt_;
    if (!surroundings_ || !surroundings_->reducedMotion())
        return curve_.at(seconds, start_, to_);
    const double part = std::clamp(seconds / shortFade, 0.0, 1.0);
    return {std::lerp(start_.value, to_, part), 0};
}

void SpringValue::take(const SpringCurve::State &state)
{
    const bool differs = state_.value != state.value;
    state_ = state;
    if (differs)
        Q_EMIT valueChanged();
}

void SpringValue::setMoving(bool moving)
{
    if (moving == moving_)
        return;
    moving_ = moving;
    clock_->setMoving(this, moving);
    Q_EMIT movingChanged();
}
