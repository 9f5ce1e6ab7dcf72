#pragma once

#include "X11Display.h"

#include <VelmoraLinux/Windows/ActivationToken.h>
#include <VelmoraPlatform/WindowManager.h>

// Windows on X11 and XWayland. Panels bypass the window manager; it neither frames nor places nor focuses them.
class X11WindowManager : public WindowManager {
public:
    // `connection` may be null: windows then behave as Qt alone makes them.
    X11WindowManager(X11Display *connection, ActivationToken &token);

    void makePanel(QWindow &window, const PanelTraits &traits) override;
    void giveKeyboard(QWindow &panel) override;
    void returnKeyboard(QWindow &panel) override;
    void place(QWindow &panel, const QRect &frame) override;

    [[nodiscard]] bool blendsWindows() const override { return blendsWindows_; }

    void setBlendingHandler(std::function<void()> handler) override { blendingChanged_ = std::move(handler); }

    void activate(QWindow &window) override;

private:
    void watchCompositor();
    void setBlendsWindows(bool blends);
    void tellWindowManager(const QWindow &window, const char *message, quint32 first, quint32 second = 0);
    void useToken(const QWindow &window);
    // The window that has the keyboard; its server's numbers for none and for the one under the pointer are passed on.
    [[nodiscard]] xcb_window_t keyboardOwner() const;
    void setKeyboardOwner(xcb_window_t window);

    X11Display *connection_;
    ActivationToken &token_;
    bool blendsWindows_ = true;
    xcb_window_t earlierKeyboardOwner_ = XCB_NONE; // Before a panel was given it.
    std::function<void()> blendingChanged_;
};
