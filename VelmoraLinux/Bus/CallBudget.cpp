#include "CallBudget.h"

#include <QEvent>

#include <chrono>

namespace {
constexpr auto period = std::chrono::milliseconds(100);
} // namespace

CallBudget::CallBudget(std::initializer_list<QObject *> services)
{
    periodEnd_.setSingleShot(true);
    periodEnd_.callOnTimeout(this, [this] { calls_ = 0; });
    for (QObject *service : services)
        service->installEventFilter(this);
}

// A call that is kept from its service is answered with the error by Qt, when it deletes the event.
bool CallBudget::eventFilter(QObject * /*service*/, QEvent *event)
{
    if (event->type() != QEvent::MetaCall)
        return false;
    if (calls_ == 0)
        periodEnd_.start(period);
    if (calls_ == mostAtOnce)
        return true;
    ++calls_;
    return false;
}
