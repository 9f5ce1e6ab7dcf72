#include "FrameAnimation.h"

#include <utility>

namespace {
constexpr int growthTime = 200; // Milliseconds.
}

FrameAnimation::FrameAnimation(QSize size, const Appearance &appearance,
                               std::function<void(const QRect &)> place)
    : appearance_(appearance)
    , place_(std::move(place))
    , frame_(QPoint(), size)
{
    animation_.setDuration(growthTime);
    animation_.setEasingCurve(QEasingCurve::InOutQuad);
    QObject::connect(&animation_, &QVariantAnimation::valueChanged, &animation_,
                     [this](const QVariant &frame) { place_(frame.toRect()); });
}

void FrameAnimation::change(const QRect &frame, FrameChange change)
{
    const QRect shown =
        animation_.state() == QAbstractAnimation::Running ? animation_.currentValue().toRect() : frame_;
    animation_.stop();
    frame_ = frame;
    if (change == FrameChange::atOnce || appearance_.reducesMotion()) {
        place_(frame);
        return;
    }
    animation_.setStartValue(shown);
    animation_.setEndValue(frame);
    animation_.start();
}
