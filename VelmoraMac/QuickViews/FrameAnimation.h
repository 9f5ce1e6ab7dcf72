#pragma once

#include <VelmoraMac/Shell/Panel.h>
#include <VelmoraPlatform/Appearance.h>

#include <QVariantAnimation>

#include <functional>

// Moves a panel from one frame to the next.
class FrameAnimation {
public:
    // `place` shows the panel at a frame.
    FrameAnimation(QSize size, const Appearance &appearance, std::function<void(const QRect &)> place);

    // Where the panel is, or will be at the end.
    [[nodiscard]] QRect frame() const { return frame_; }

    void change(const QRect &frame, FrameChange change);

    // The panel stays where it is.
    void stop() { animation_.stop(); }

private:
    const Appearance &appearance_;
    std::function<void(const QRect &)> place_;
    QRect frame_;
    QVariantAnimation animation_;
};
