#pragma once

#include "LayerShell.h"
#include "PixelBuffers.h"
#include "SeatInput.h"

#include <QSize>

#include <cstdint>
#include <functional>

struct wl_output;
struct wl_surface;
struct wp_viewport;
struct zwlr_layer_surface_v1;

// A surface of the layer shell over one screen that nobody can see and that never has the keyboard.
class ScreenCover {
public:
    // Each may destroy the cover.
    struct Handlers {
        std::function<void(QSize size)> measured;
        // Mouse and touch screen, as a window as large as the screen gets them. Without this handler the surface is
        // never shown, and it is as large as the work area.
        std::function<void(QEvent &event)> input;
        // The compositor has removed it, for example with its screen.
        std::function<void()> closed;
    };

    // `layer`: ZWLR_LAYER_SHELL_V1_LAYER_...; shown only where the compositor offers viewports.
    ScreenCover(const LayerShell &shell, SeatInput &seat, wl_output *screen, std::uint32_t layer,
                Handlers handlers);
    ~ScreenCover();
    Q_DISABLE_COPY_MOVE(ScreenCover)

    // Whether its size is known, or never will be.
    [[nodiscard]] bool isMeasured() const { return isMeasured_; }

    [[nodiscard]] const wl_output *screen() const { return screen_; }

private:
    void configure(std::uint32_t serial, QSize size);
    void show(QSize size);

    struct Listeners; // What the protocol calls.

    SeatInput &seat_;
    const wl_output *screen_;
    Handlers handlers_;
    wl_surface *surface_;
    zwlr_layer_surface_v1 *role_;
    wp_viewport *viewport_ = nullptr;
    bool isMeasured_ = false;
    bool hasPicture_ = false;
    PixelBuffers buffers_;
};
