#include "PanelFringe.h"

#include "LayerShell.h"

#include <QImage>

#include <utility>
#include <viewporter-client-header.h>
#include <wayland-client-protocol.h>

namespace {
constexpr int width = 8; // Of the fringe, in points.
}

PanelFringe::PanelFringe(const LayerShell &shell, wl_surface *panel)
    : buffers_(shell.memory(), [] {})
{
    if (shell.subcompositor() == nullptr || shell.viewporter() == nullptr)
        return;
    surface_ = wl_compositor_create_surface(shell.compositor());
    role_ = wl_subcompositor_get_subsurface(shell.subcompositor(), surface_, panel);
    viewport_ = wp_viewporter_get_viewport(shell.viewporter(), surface_);
    wl_subsurface_place_below(role_, panel);
    wl_subsurface_set_position(role_, -width, -width);
    QImage nothing(1, 1, QImage::Format_ARGB32_Premultiplied);
    nothing.fill(Qt::transparent);
    wl_surface_attach(surface_, buffers_.hold(nothing), 0, 0);
}

PanelFringe::~PanelFringe()
{
    if (surface_ == nullptr)
        return;
    wp_viewport_destroy(viewport_);
    wl_subsurface_destroy(role_);
    wl_surface_destroy(surface_);
}

void PanelFringe::surround(QSize panel)
{
    if (surface_ == nullptr || std::exchange(size_, panel) == panel)
        return;
    wp_viewport_set_destination(viewport_, panel.width() + 2 * width, panel.height() + 2 * width);
    wl_surface_damage_buffer(surface_, 0, 0, 1, 1);
    wl_surface_commit(surface_);
}
