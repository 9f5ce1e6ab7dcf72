#pragma once

#include "FrameAnimation.h"
#include "QuickViews.h"

#include <VelmoraMac/Shell/Panel.h>
#include <VelmoraPlatform/PanelSurfaces.h>

#include <QObject>

// A panel that the desktop's shell shows; its content is a Qt Quick view, drawn off screen.
class SurfacePanel : public QObject, public Panel {
    Q_OBJECT

public:
    SurfacePanel(OffscreenPicture view, const PanelOptions &options, PanelSurfaces &surfaces,
                 const Appearance &appearance);

    [[nodiscard]] QRect frame() const override { return frame_.frame(); }

    void setFrame(const QRect &frame, FrameChange change) override { frame_.change(frame, change); }

    [[nodiscard]] bool isVisible() const override { return surface_->isVisible(); }

    void orderFront() override;
    void orderOut() override;

    // A panel that can be cancelled has the keyboard as long as it is shown.
    void takeKeyboard() override {}

    // No press of a mouse is on it: the pointer monitor sees windows only.
    [[nodiscard]] quintptr windowId() const override;

private:
    void place(const QRect &frame);
    void handleInput(QEvent &event);

    OffscreenPicture view_;
    std::function<void()> cancelled_;
    std::unique_ptr<PanelSurface> surface_;
    FrameAnimation frame_;
};
