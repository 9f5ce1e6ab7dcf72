#include "ViewSteps.h"

#include "AnimationClock.h"

#include <QQmlEngine>
#include <QQmlInfo>

void ViewSteps::classBegin()
{
    if (AnimationClock *clock = AnimationClock::of(this))
        steps_.emplace(*clock);
}

void ViewSteps::startOver()
{
    if (steps_)
        steps_->startOver();
}

void ViewSteps::after(double seconds, const QJSValue &step)
{
    if (!steps_)
        return;
    const auto delay =
        std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::duration<double>(seconds));
    steps_->after(delay, [this, step] {
        const QJSValue outcome = step.call();
        if (outcome.isError())
            qmlWarning(this) << outcome.toString();
    });
}
