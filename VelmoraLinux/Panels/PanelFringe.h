#pragma once

#include "PixelBuffers.h"

#include <QSize>
#include <QtGlobal>

class LayerShell;
struct wl_subsurface;
struct wl_surface;
struct wp_viewport;

// A fringe around a panel, as wide as its distance from the bar, that nobody sees but that the mouse rests on. Where the
// focus follows the mouse, a window between icon and panel would otherwise take the keyboard from the panel before the
// mouse has come to it.
class PanelFringe {
public:
    // Nothing is done where the compositor does not offer what it takes.
    PanelFringe(const LayerShell &shell, wl_surface *panel);
    ~PanelFringe();
    Q_DISABLE_COPY_MOVE(PanelFringe)

    // Null where nothing is done.
    [[nodiscard]] const wl_surface *surface() const { return surface_; }

    // Takes effect with the panel's next commit.
    void surround(QSize panel);

private:
    wl_surface *surface_ = nullptr;
    wl_subsurface *role_ = nullptr;
    wp_viewport *viewport_ = nullptr;
    PixelBuffers buffers_;
    QSize size_;
};
