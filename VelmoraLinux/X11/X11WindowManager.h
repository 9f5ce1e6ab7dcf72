#pragma once

#include "X11Display.h"

#include <VelmoraLinux/Windows/ActivationToken.h>
#include <VelmoraPlatform/WindowManager.h>

// Windows on X11 and XWayland. Panels are tooltip windows: no window manager frames, places or focuses those.
class X11WindowManager : public WindowManager {
public:
    // `connection` may be null: windows then behave as Qt alone makes them.
    X11WindowManager(X11Display *connection, ActivationToken &token);

    void makePanel(QWindow &window, const PanelTraits &traits) override;
    void place(QWindow &panel, const QRect &frame) override;

    [[nodiscard]] bool blendsWindows() const override { return blendsWindows_; }

    void setBlendingHandler(std::function<void()> handler) override { blendingChanged_ = std::move(handler); }

    void activate(QWindow &window) override;

private:
    void watchCompositor();
    void setBlendsWindows(bool blends);
    void tellWindowManager(const QWindow &window, const char *message, quint32 first, quint32 second = 0);
    void useToken(const QWindow &window);

    X11Display *connection_;
    ActivationToken &token_;
    bool blendsWindows_ = true;
    std::function<void()> blendingChanged_;
};
