#pragma once

#include "View.h"

#include <QRect>
#include <QSize>

#include <functional>
#include <memory>

enum class FrameChange {
    atOnce,
    animated, // The window follows within a fraction of a second; `frame` is the final frame at once.
};

// A borderless window above all others, on every desktop, that takes the focus from the user's own windows only where it is
// asked to. Where the desktop has something better for panels than windows, it is that.
//
// Frames are in points with the origin at the top left of the desktop. Destroying a panel removes it from the
// screen; a handler of its view's requests may do that.
class Panel {
public:
    virtual ~Panel() = default;
    [[nodiscard]] virtual QRect frame() const = 0;
    virtual void setFrame(const QRect &frame, FrameChange change) = 0;
    [[nodiscard]] virtual bool isVisible() const = 0;
    virtual void orderFront() = 0;
    virtual void orderOut() = 0;
    // Gives it the keyboard, as soon as it is on screen. It is cancelled when the user gives that to another window.
    virtual void takeKeyboard() = 0;
    // The window in PointerMonitor::Press.
    [[nodiscard]] virtual quintptr windowId() const = 0;
};

struct PanelOptions {
    QSize size;
    // A panel that does not accept the mouse passes every click to the window below.
    bool acceptsMouse = true;
    // Of the panel's shape, where the desktop does not composite windows.
    int cornerRadius = 0;
    // Called when the panel has the keyboard and the user presses Escape or turns to something else, and when the
    // desktop removes the panel. A panel without it never has the keyboard.
    std::function<void()> cancelled = {};
    // Shown where the user works, as far as the desktop tells; its frame counts from the main screen.
    bool followsUser = false;
    // Whether takeKeyboard() will be called before it is shown.
    bool takesKeyboard = false;
};

class PanelFactory {
public:
    virtual ~PanelFactory() = default;
    // A panel that is not on screen yet. Never fails: a view that cannot be loaded leaves the panel empty.
    [[nodiscard]] virtual std::unique_ptr<Panel> makePanel(const View &view, const PanelOptions &options) = 0;
};
