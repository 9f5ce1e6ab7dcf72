#include "BreathingValue.h"

#include "AnimationClock.h"

#include <QEasingCurve>
#include <QPointF>

#include <algorithm>
#include <cmath>

BreathingValue::BreathingValue(QObject *parent)
    : QObject(parent)
{
}

BreathingValue::~BreathingValue()
{
    if (clock_)
        clock_->setMoving(this, false);
}

void BreathingValue::componentComplete()
{
    clock_ = AnimationClock::of(this);
    if (clock_)
        connect(clock_, &AnimationClock::ticked, this, [this] {
            if (running_)
                step();
        });
    apply();
}

void BreathingValue::setRunning(bool running)
{
    if (running == running_)
        return;
    running_ = running;
    apply();
    Q_EMIT runningChanged();
}

double BreathingValue::eased(double time)
{
    static const QEasingCurve curve = [] {
        QEasingCurve easeInOut(QEasingCurve::BezierSpline);
        easeInOut.addCubicBezierSegment(QPointF(0.42, 0), QPointF(0.58, 1), QPointF(1, 1));
        return easeInOut;
    }();
    return curve.valueForProgress(time);
}

void BreathingValue::apply()
{
    if (!clock_)
        return;
    startedAt_ = clock_->seconds();
    clock_->setMoving(this, running_);
    take(0);
}

void BreathingValue::step()
{
    const double legs = (clock_->seconds() - startedAt_) / std::max(duration_, 1e-3);
    const double leg = std::fmod(legs, 2);
    take(eased(leg < 1 ? leg : 2 - leg));
}

void BreathingValue::take(double value)
{
    if (value == value_)
        return;
    value_ = value;
    Q_EMIT valueChanged();
}
