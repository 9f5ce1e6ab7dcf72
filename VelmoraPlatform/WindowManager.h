#pragma once

#include <QRect>

#include <functional>

class QWindow;

struct PanelTraits {
    // Clicks on a panel that does not accept the mouse go to the window below it.
    bool acceptsMouse = true;
    // Of the panel's shape, in points, where the desktop cannot blend windows.
    int cornerRadius = 0;
    // Whether it is to be given the keyboard (giveKeyboard). The others are windows of a kind that no window manager
    // gives it to.
    bool takesKeyboard = false;
};

// What windows need of the desktop's window manager.
class WindowManager {
public:
    virtual ~WindowManager() = default;
    // Makes `window`, which was never shown, a panel: without a frame, above all others, on every desktop,
    // never given the focus but by giveKeyboard.
    virtual void makePanel(QWindow &window, const PanelTraits &traits) = 0;
    // Gives the keyboard to a panel that is on screen. The window that had it gets it back by returnKeyboard.
    virtual void giveKeyboard(QWindow &panel) = 0;
    // Before a panel that was given the keyboard is hidden. Nothing happens when the user has given it to another window.
    virtual void returnKeyboard(QWindow &panel) = 0;
    // Moves a panel, shown or not. In points, origin at the top left of the desktop.
    virtual void place(QWindow &panel, const QRect &frame) = 0;
    // Whether the desktop composites translucent windows. If not, panels are clipped to their shape.
    [[nodiscard]] virtual bool blendsWindows() const = 0;
    // `handler` runs on the main thread after `blendsWindows` has changed. Panels that are shown then get their
    // new shape when they are placed again.
    virtual void setBlendingHandler(std::function<void()> handler) = 0;
    // Puts `window`, which is shown, above the other applications' windows on the desktop the user is looking
    // at, and gives it the keyboard.
    virtual void activate(QWindow &window) = 0;
};
