#include "ScreenCover.h"

#include <QEvent>
#include <QImage>

#include <layer-shell-client-header.h>
#include <utility>
#include <viewporter-client-header.h>
#include <wayland-client-protocol.h>

namespace {

constexpr auto purpose = "velmora-cover";
constexpr std::uint32_t allEdges = ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP | ZWLR_LAYER_SURFACE_V1_ANCHOR_BOTTOM |
                                   ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT | ZWLR_LAYER_SURFACE_V1_ANCHOR_RIGHT;
constexpr int beyondBars = -1; // The exclusive zone of a surface that does not keep clear of bars.

QImage nothing()
{
    QImage pixel(1, 1, QImage::Format_ARGB32_Premultiplied);
    pixel.fill(Qt::transparent);
    return pixel;
}

} // namespace

struct ScreenCover::Listeners {
    static ScreenCover &self(void *data) { return *static_cast<ScreenCover *>(data); }

    static constexpr zwlr_layer_surface_v1_listener role = {
        .configure =
            [](void *data, zwlr_layer_surface_v1 *, std::uint32_t serial, std::uint32_t width,
               std::uint32_t height) {
                self(data).configure(serial, QSize(static_cast<int>(width), static_cast<int>(height)));
            },
        .closed =
            [](void *data, zwlr_layer_surface_v1 *) {
                self(data).isMeasured_ = true;
                const auto closed = self(data).handlers_.closed;
                closed();
            }};
};

ScreenCover::ScreenCover(const LayerShell &shell, SeatInput &seat, wl_output *screen, std::uint32_t layer,
                         Handlers handlers)
    : seat_(seat)
    , screen_(screen)
    , handlers_(std::move(handlers))
    , surface_(wl_compositor_create_surface(shell.compositor()))
    , role_(zwlr_layer_shell_v1_get_layer_surface(shell.shell(), surface_, screen, layer, purpose))
    , buffers_(shell.memory(), [] {})
{
    zwlr_layer_surface_v1_add_listener(role_, &Listeners::role, this);
    zwlr_layer_surface_v1_set_anchor(role_, allEdges);
    if (handlers_.input && shell.viewporter() != nullptr) {
        zwlr_layer_surface_v1_set_exclusive_zone(role_, beyondBars);
        viewport_ = wp_viewporter_get_viewport(shell.viewporter(), surface_);
        seat_.listen(surface_, handlers_.input);
    }
    wl_surface_commit(surface_); // Without a picture: asks for the first configuration.
}

ScreenCover::~ScreenCover()
{
    seat_.ignore(surface_);
    if (viewport_ != nullptr)
        wp_viewport_destroy(viewport_);
    zwlr_layer_surface_v1_destroy(role_);
    wl_surface_destroy(surface_);
}

void ScreenCover::configure(std::uint32_t serial, QSize size)
{
    zwlr_layer_surface_v1_ack_configure(role_, serial);
    isMeasured_ = true;
    if (viewport_ != nullptr)
        show(size);
    const auto measured = handlers_.measured;
    if (measured)
        measured(size);
}

void ScreenCover::show(QSize size)
{
    wp_viewport_set_destination(viewport_, size.width(), size.height());
    if (!std::exchange(hasPicture_, true)) {
        wl_surface_attach(surface_, buffers_.hold(nothing()), 0, 0);
        wl_surface_damage_buffer(surface_, 0, 0, 1, 1);
    }
    wl_surface_commit(surface_);
}
