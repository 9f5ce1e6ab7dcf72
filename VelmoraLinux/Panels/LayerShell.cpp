#include "LayerShell.h"

#include <algorithm>
#include <cursor-shape-client-header.h>
#include <fractional-scale-client-header.h>
#include <layer-shell-client-header.h>
#include <utility>
#include <viewporter-client-header.h>
#include <wayland-client-protocol.h>
#include <xdg-output-client-header.h>

namespace {

constexpr std::uint32_t compositorVersion = 4; // Tells damage in pixels of the buffer.
constexpr std::uint32_t shellVersion = 4;      // Has the keyboard on demand.
constexpr std::uint32_t outputManagerVersion = 2;

} // namespace

struct LayerShell::Listeners {
    static LayerShell &self(void *data) { return *static_cast<LayerShell *>(data); }

    static constexpr wl_registry_listener registry = {
        .global = [](void *data, wl_registry *, std::uint32_t name, const char *interface,
                     std::uint32_t version) { self(data).addGlobal(name, interface, version); },
        .global_remove = [](void *data, wl_registry *,
                            std::uint32_t name) { self(data).handlers_.removed(name); }};
};

LayerShell::LayerShell(WaylandConnection &connection, Handlers handlers)
    : connection_(connection)
    , handlers_(std::move(handlers))
    , registry_(wl_display_get_registry(connection.display()))
{
    wl_registry_add_listener(registry_, &Listeners::registry, this);
    connection_.flush();
}

LayerShell::~LayerShell()
{
    if (cursorShapes_ != nullptr)
        wp_cursor_shape_manager_v1_destroy(cursorShapes_);
    if (viewporter_ != nullptr)
        wp_viewporter_destroy(viewporter_);
    if (scales_ != nullptr)
        wp_fractional_scale_manager_v1_destroy(scales_);
    if (outputManager_ != nullptr)
        zxdg_output_manager_v1_destroy(outputManager_);
    if (shell_ != nullptr &&
        zwlr_layer_shell_v1_get_version(shell_) >= ZWLR_LAYER_SHELL_V1_DESTROY_SINCE_VERSION)
        zwlr_layer_shell_v1_destroy(shell_);
    else if (shell_ != nullptr)
        wl_proxy_destroy(reinterpret_cast<wl_proxy *>(shell_));
    if (subcompositor_ != nullptr)
        wl_subcompositor_destroy(subcompositor_);
    if (memory_ != nullptr)
        wl_shm_destroy(memory_);
    if (compositor_ != nullptr)
        wl_compositor_destroy(compositor_);
    wl_registry_destroy(registry_);
    connection_.flush();
}

void LayerShell::addGlobal(std::uint32_t name, std::string_view interface, std::uint32_t version)
{
    const auto bind = [&](auto *&place, const wl_interface &wanted, std::uint32_t newest) {
        if (interface != wanted.name || place != nullptr)
            return;
        void *proxy = wl_registry_bind(registry_, name, &wanted, std::min(version, newest));
        place = static_cast<std::remove_reference_t<decltype(place)>>(proxy);
    };
    if (version >= compositorVersion)
        bind(compositor_, wl_compositor_interface, compositorVersion);
    bind(subcompositor_, wl_subcompositor_interface, 1);
    bind(memory_, wl_shm_interface, 1);
    bind(shell_, zwlr_layer_shell_v1_interface, shellVersion);
    bind(outputManager_, zxdg_output_manager_v1_interface, outputManagerVersion);
    bind(scales_, wp_fractional_scale_manager_v1_interface, 1);
    bind(viewporter_, wp_viewporter_interface, 1);
    bind(cursorShapes_, wp_cursor_shape_manager_v1_interface, 1);
    if (interface == wl_output_interface.name)
        handlers_.outputAdded(name, version);
    if (interface == wl_seat_interface.name)
        handlers_.seatAdded(name, version);
    if (interface == zxdg_output_manager_v1_interface.name)
        handlers_.outputManagerAdded();
}
