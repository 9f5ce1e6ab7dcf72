#pragma once

#include <QRect>

#include <functional>
#include <memory>

class QEvent;
class QImage;

struct PanelSurfaceTraits {
    // Clicks on a surface that does not accept the mouse go to what is below it.
    bool acceptsMouse = true;
    // Has the keyboard from the moment it is shown until the user turns to something else.
    bool takesKeyboard = false;
    // Shown on the screen that the user works at, as the desktop sees it; frames then count from the main screen.
    bool followsUser = false;
};

// A panel that the desktop's shell shows: no window, so no window manager frames, tiles or focuses it. The
// application draws it, pixel by pixel.
class PanelSurface {
public:
    // May destroy the surface.
    struct Handlers {
        // The panel as it looks now, `scale` pixels a point. Called when the desktop shows the next picture.
        std::function<const QImage &(double scale)> draw;
        // Input as a window of the same size gets it, the keyboard's coming and going included.
        std::function<void(QEvent &event)> input;
        // The desktop has removed the panel, for example with its screen.
        std::function<void()> removed;
    };

    virtual ~PanelSurface() = default;
    // In the points of Screens; takes effect with the next picture.
    virtual void setFrame(const QRect &frame) = 0;
    virtual void show() = 0;
    virtual void hide() = 0;
    [[nodiscard]] virtual bool isVisible() const = 0;
    // Has `draw` called soon, once for any number of requests; not while nobody can see the panel.
    virtual void requestPicture() = 0;
};

class PanelSurfaces {
public:
    virtual ~PanelSurfaces() = default;
    // Whether the desktop has such surfaces now. While it has none, panels are windows.
    [[nodiscard]] virtual bool areOffered() const = 0;
    // Not shown yet. One that is made while none are offered is never shown.
    [[nodiscard]] virtual std::unique_ptr<PanelSurface> makeSurface(const PanelSurfaceTraits &traits,
                                                                    PanelSurface::Handlers handlers) = 0;
};
