#pragma once

#include <VelmoraLinux/Wayland/WaylandConnection.h>

#include <QtGlobal>

#include <cstdint>
#include <functional>
#include <string_view>

struct wl_compositor;
struct wl_registry;
struct wl_shm;
struct wl_subcompositor;
struct wp_cursor_shape_manager_v1;
struct wp_fractional_scale_manager_v1;
struct wp_viewporter;
struct zwlr_layer_shell_v1;
struct zxdg_output_manager_v1;

// What a compositor offers that panels need, on one connection. Null is what it does not offer.
class LayerShell {
public:
    struct Handlers {
        // Names are those in the registry.
        std::function<void(std::uint32_t name, std::uint32_t version)> outputAdded;
        std::function<void()> outputManagerAdded;
        std::function<void(std::uint32_t name, std::uint32_t version)> seatAdded;
        std::function<void(std::uint32_t name)> removed;
    };

    LayerShell(WaylandConnection &connection, Handlers handlers);
    ~LayerShell();
    Q_DISABLE_COPY_MOVE(LayerShell)

    // Whether there can be panels. Known after one round trip.
    [[nodiscard]] bool isComplete() const
    {
        return compositor_ != nullptr && memory_ != nullptr && shell_ != nullptr;
    }

    [[nodiscard]] WaylandConnection &connection() const { return connection_; }

    [[nodiscard]] wl_registry *registry() const { return registry_; }

    [[nodiscard]] wl_compositor *compositor() const { return compositor_; }

    [[nodiscard]] wl_subcompositor *subcompositor() const { return subcompositor_; }

    [[nodiscard]] wl_shm *memory() const { return memory_; }

    [[nodiscard]] zwlr_layer_shell_v1 *shell() const { return shell_; }

    [[nodiscard]] zxdg_output_manager_v1 *outputManager() const { return outputManager_; }

    [[nodiscard]] wp_fractional_scale_manager_v1 *scales() const { return scales_; }

    [[nodiscard]] wp_cursor_shape_manager_v1 *cursorShapes() const { return cursorShapes_; }

    [[nodiscard]] wp_viewporter *viewporter() const { return viewporter_; }

private:
    void addGlobal(std::uint32_t name, std::string_view interface, std::uint32_t version);

    struct Listeners;

    WaylandConnection &connection_;
    Handlers handlers_;
    wl_registry *registry_;
    wl_compositor *compositor_ = nullptr;
    wl_subcompositor *subcompositor_ = nullptr;
    wl_shm *memory_ = nullptr;
    zwlr_layer_shell_v1 *shell_ = nullptr;
    zxdg_output_manager_v1 *outputManager_ = nullptr;
    wp_fractional_scale_manager_v1 *scales_ = nullptr;
    wp_viewporter *viewporter_ = nullptr;
    wp_cursor_shape_manager_v1 *cursorShapes_ = nullptr;
};
