#pragma once

#include "QuickViews.h"

#include <VelmoraMac/Shell/AppWindow.h>

// An ordinary window whose content is a Qt Quick view.
class QuickAppWindow : public AppWindow {
public:
    QuickAppWindow(QuickWindow window, const AppWindowOptions &options, WindowManager &windows,
                   const Screens &screens);

    [[nodiscard]] bool isVisible() const override { return window_->isVisible(); }

    void centre() override;
    void bringToFront() override;
    void showQuietly() override;

private:
    void followSurroundings();

    QuickWindow window_;
    WindowManager &windows_;
    const Screens &screens_;
};
