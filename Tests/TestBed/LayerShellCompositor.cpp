#include "LayerShellCompositor.h"

#include <sys/mman.h>
#include <unistd.h>
#include <xkbcommon/xkbcommon.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fractional-scale-server-header.h>
#include <layer-shell-server-header.h>
#include <memory>
#include <utility>
#include <viewporter-server-header.h>
#include <wayland-server.h>
#include <xdg-output-server-header.h>

namespace {
constexpr QSize outputSize(1280, 800); // In points.
}

QPoint LayerShellServer::Compositor::Output::corner() const
{
    return {outputSize.width() * index, 0};
}

struct LayerShellServer::Compositor::Requests {
    static void destroy(wl_client *, wl_resource *resource) { wl_resource_destroy(resource); }

    static Compositor &compositor(wl_resource *resource)
    {
        return *static_cast<Compositor *>(wl_resource_get_user_data(resource));
    }

    static Surface &surface(wl_resource *resource)
    {
        return *static_cast<Surface *>(wl_resource_get_user_data(resource));
    }

    static wl_resource *make(wl_client *client, const wl_interface &interface, wl_resource *parent,
                             std::uint32_t id)
    {
        return wl_resource_create(client, &interface, wl_resource_get_version(parent), id);
    }

    static constexpr struct wl_region_interface region = {
        .destroy = destroy,
        .add =
            [](wl_client *, wl_resource *resource, std::int32_t, std::int32_t, std::int32_t, std::int32_t) {
                // That it is not empty is all that matters.
                wl_resource_set_user_data(resource, resource);
            },
        .subtract = [](wl_client *, wl_resource *, std::int32_t, std::int32_t, std::int32_t,
                       std::int32_t) {}};

    static constexpr struct wl_surface_interface surfaceRequests = {
        .destroy = destroy,
        .attach = [](wl_client *, wl_resource *resource, wl_resource *buffer, std::int32_t,
                     std::int32_t) { surface(resource).buffer = buffer; },
        .damage = [](wl_client *, wl_resource *, std::int32_t, std::int32_t, std::int32_t, std::int32_t) {},
        .frame =
            [](wl_client *client, wl_resource *resource, std::uint32_t id) {
                surface(resource).callbacks.push_back(
                    wl_resource_create(client, &wl_callback_interface, 1, id));
            },
        .set_opaque_region = [](wl_client *, wl_resource *, wl_resource *) {},
        .set_input_region =
            [](wl_client *, wl_resource *resource, wl_resource *given) {
                surface(resource).pending.acceptsInput =
                    given == nullptr || wl_resource_get_user_data(given) != nullptr;
            },
        .commit = [](wl_client *,
                     wl_resource *resource) { surface(resource).compositor->commit(surface(resource)); },
        .set_buffer_transform = [](wl_client *, wl_resource *, std::int32_t) {},
        .set_buffer_scale = [](wl_client *, wl_resource *resource,
                               std::int32_t scale) { surface(resource).pending.bufferScale = scale; },
        .damage_buffer = [](wl_client *, wl_resource *, std::int32_t, std::int32_t, std::int32_t,
                            std::int32_t) {},
        .offset = [](wl_client *, wl_resource *, std::int32_t, std::int32_t) {}};

    static constexpr struct wl_compositor_interface compositorRequests = {
        .create_surface =
            [](wl_client *client, wl_resource *resource, std::uint32_t id) {
                Surface &fresh = compositor(resource).surfaces_.emplace_back();
                fresh.compositor = &compositor(resource);
                fresh.proxy = make(client, wl_surface_interface, resource, id);
                wl_resource_set_implementation(fresh.proxy, &surfaceRequests, &fresh, [](wl_resource *gone) {
                    Surface &ended = surface(gone);
                    if (ended.role != nullptr) // Its client has gone without an order.
                        wl_resource_set_destructor(ended.role, nullptr);
                    ended.compositor->surfaces_.remove_if(
                        [&ended](const Surface &known) { return &known == &ended; });
                });
            },
        .create_region =
            [](wl_client *client, wl_resource *resource, std::uint32_t id) {
                wl_resource_set_implementation(make(client, wl_region_interface, resource, id), &region,
                                               nullptr, nullptr);
            }};

    static constexpr struct zwlr_layer_surface_v1_interface role = {
        .set_size =
            [](wl_client *, wl_resource *resource, std::uint32_t width, std::uint32_t height) {
                surface(resource).pending.size = QSize(static_cast<int>(width), static_cast<int>(height));
            },
        .set_anchor = [](wl_client *, wl_resource *resource,
                         std::uint32_t anchors) { surface(resource).pending.anchors = anchors; },
        .set_exclusive_zone = [](wl_client *, wl_resource *resource,
                                 std::int32_t zone) { surface(resource).pending.zone = zone; },
        .set_margin =
            [](wl_client *, wl_resource *resource, std::int32_t top, std::int32_t right, std::int32_t bottom,
               std::int32_t left) { surface(resource).pending.margins = QMargins(left, top, right, bottom); },
        .set_keyboard_interactivity =
            [](wl_client *, wl_resource *resource, std::uint32_t keyboard) {
                Surface &asking = surface(resource);
                asking.pending.keyboard = keyboard;
                asking.compositor->keyboardRequests << keyboard;
                if (!asking.compositor->losesKeyboardOnDemand ||
                    keyboard != ZWLR_LAYER_SURFACE_V1_KEYBOARD_INTERACTIVITY_ON_DEMAND)
                    return;
                forDevices(asking.compositor->keyboards_, asking, [&asking](wl_resource *device) {
                    wl_keyboard_send_leave(device, 1, asking.proxy);
                });
            },
        .get_popup = [](wl_client *, wl_resource *, wl_resource *) {},
        .ack_configure =
            [](wl_client *, wl_resource *resource, std::uint32_t serial) {
                Surface &configured = surface(resource);
                if (serial == 0 || serial > configured.configuration)
                    configured.compositor->faults << QStringLiteral("acknowledged what was never sent");
                configured.acknowledged = serial;
            },
        .destroy = destroy,
        .set_layer = [](wl_client *, wl_resource *resource,
                        std::uint32_t layer) { surface(resource).pending.layer = layer; }};

    static constexpr struct zwlr_layer_shell_v1_interface shell = {
        .get_layer_surface =
            [](wl_client *client, wl_resource *resource, std::uint32_t id, wl_resource *owner,
               wl_resource *output, std::uint32_t layer, const char *) {
                Surface &given = surface(owner);
                given.pending.layer = layer;
                if (output != nullptr)
                    given.pending.output = static_cast<Output *>(wl_resource_get_user_data(output))->index;
                given.role = make(client, zwlr_layer_surface_v1_interface, resource, id);
                wl_resource_set_implementation(given.role, &role, &given,
                                               [](wl_resource *gone) { surface(gone).role = nullptr; });
            },
        .destroy = destroy};

    static constexpr struct wp_viewport_interface viewport = {
        .destroy = destroy,
        .set_source = [](wl_client *, wl_resource *, wl_fixed_t, wl_fixed_t, wl_fixed_t, wl_fixed_t) {},
        .set_destination =
            [](wl_client *, wl_resource *resource, std::int32_t width, std::int32_t height) {
                surface(resource).pending.destination = QSize(width, height);
            }};

    static constexpr struct wp_viewporter_interface viewporter = {
        .destroy = destroy,
        .get_viewport = [](wl_client *client, wl_resource *resource, std::uint32_t id, wl_resource *owner) {
            wl_resource_set_implementation(make(client, wp_viewport_interface, resource, id), &viewport,
                                           &surface(owner), nullptr);
        }};

    static constexpr struct wp_fractional_scale_v1_interface fraction = {.destroy = destroy};

    static constexpr struct wp_fractional_scale_manager_v1_interface fractions = {
        .destroy = destroy,
        .get_fractional_scale = [](wl_client *client, wl_resource *resource, std::uint32_t id,
                                   wl_resource *owner) {
            surface(owner).fraction = make(client, wp_fractional_scale_v1_interface, resource, id);
            wl_resource_set_implementation(surface(owner).fraction, &fraction, nullptr, nullptr);
        }};

    static constexpr struct zxdg_output_v1_interface outputFrame = {.destroy = destroy};

    static constexpr struct zxdg_output_manager_v1_interface outputFrames = {
        .destroy = destroy,
        .get_xdg_output = [](wl_client *client, wl_resource *resource, std::uint32_t id, wl_resource *owner) {
            const auto &output = *static_cast<Output *>(wl_resource_get_user_data(owner));
            wl_resource *frame = make(client, zxdg_output_v1_interface, resource, id);
            wl_resource_set_implementation(frame, &outputFrame, nullptr, nullptr);
            zxdg_output_v1_send_logical_position(frame, output.corner().x(), output.corner().y());
            zxdg_output_v1_send_logical_size(frame, outputSize.width(), outputSize.height());
            zxdg_output_v1_send_done(frame);
        }};

    static constexpr struct wl_output_interface output = {.release = destroy};

    static constexpr struct wl_pointer_interface pointer = {.set_cursor = [](wl_client *, wl_resource *,
                                                                             std::uint32_t, wl_resource *,
                                                                             std::int32_t, std::int32_t) {},
                                                            .release = destroy};

    static constexpr struct wl_keyboard_interface keyboard = {.release = destroy};

    static constexpr struct wl_touch_interface touch = {.release = destroy};

    // Makes a device of the seat `resource`, which is among its `devices` for as long as it exists.
    template<auto devices, typename Implementation>
    static wl_resource *makeDevice(wl_client *client, wl_resource *resource, std::uint32_t id,
                                   const wl_interface &interface, const Implementation &implementation)
    {
        wl_resource *made = make(client, interface, resource, id);
        (compositor(resource).*devices).push_back(made);
        wl_resource_set_implementation(
            made, &implementation, wl_resource_get_user_data(resource),
            [](wl_resource *gone) { std::erase(compositor(gone).*devices, gone); });
        return made;
    }

    static constexpr struct wl_seat_interface seat = {
        .get_pointer =
            [](wl_client *client, wl_resource *resource, std::uint32_t id) {
                makeDevice<&Compositor::pointers_>(client, resource, id, wl_pointer_interface, pointer);
            },
        .get_keyboard =
            [](wl_client *client, wl_resource *resource, std::uint32_t id) {
                sendLayout(makeDevice<&Compositor::keyboards_>(client, resource, id, wl_keyboard_interface,
                                                               keyboard));
            },
        .get_touch =
            [](wl_client *client, wl_resource *resource, std::uint32_t id) {
                makeDevice<&Compositor::touchScreens_>(client, resource, id, wl_touch_interface, touch);
            },
        .release = destroy};
};

LayerShellServer::Compositor::Compositor(const Offer &offered, const QByteArray &path)
    : thread_(path)
    , bar_(offered.bar)
{
    wl_display_init_shm(thread_.display());
    offer(wl_compositor_interface, 4, Requests::compositorRequests);
    for (const double scale : offered.scales)
        addOutput(scale);
    offerSeat();
    if (offered.shell)
        offer(zwlr_layer_shell_v1_interface, offered.shellVersion, Requests::shell);
    if (offered.viewports)
        offer(wp_viewporter_interface, 1, Requests::viewporter);
    if (offered.fractions)
        offer(wp_fractional_scale_manager_v1_interface, 1, Requests::fractions);
    if (offered.outputFrames)
        offer(zxdg_output_manager_v1_interface, 3, Requests::outputFrames);
    thread_.begin();
}

template<typename Implementation>
void LayerShellServer::Compositor::offer(const wl_interface &interface, int version,
                                         const Implementation &implementation)
{
    static const Implementation *const requests = &implementation;
    static const wl_interface *const offered = &interface;
    wl_global_create(thread_.display(), offered, version, this,
                     [](wl_client *client, void *data, std::uint32_t bound, std::uint32_t id) {
                         wl_resource *resource =
                             wl_resource_create(client, offered, static_cast<int>(bound), id);
                         wl_resource_set_implementation(resource, requests, data, nullptr);
                     });
}

void LayerShellServer::Compositor::offerOutput(Output &output)
{
    const auto bind = [](wl_client *client, void *data, std::uint32_t version, std::uint32_t id) {
        auto &bound = *static_cast<Output *>(data);
        wl_resource *proxy = wl_resource_create(client, &wl_output_interface, static_cast<int>(version), id);
        wl_resource_set_implementation(proxy, &Requests::output, data, [](wl_resource *gone) {
            std::erase(static_cast<Output *>(wl_resource_get_user_data(gone))->proxies, gone);
        });
        bound.proxies.push_back(proxy);
        const QSize pixels = (QSizeF(outputSize) * bound.scale).toSize();
        wl_output_send_geometry(proxy, bound.corner().x(), bound.corner().y(), 0, 0,
                                WL_OUTPUT_SUBPIXEL_UNKNOWN, "", "", WL_OUTPUT_TRANSFORM_NORMAL);
        wl_output_send_mode(proxy, WL_OUTPUT_MODE_CURRENT, pixels.width(), pixels.height(), 60000);
        wl_output_send_scale(proxy, static_cast<int>(std::ceil(bound.scale)));
        wl_output_send_done(proxy);
    };
    output.global = wl_global_create(thread_.display(), &wl_output_interface, 3, &output, bind);
}

std::vector<LayerShellServer::Compositor::Surface *> LayerShellServer::Compositor::shown()
{
    std::vector<Surface *> shown;
    for (Surface &surface : surfaces_) {
        if (surface.role != nullptr)
            shown.push_back(&surface);
    }
    return shown;
}

void LayerShellServer::Compositor::commit(Surface &surface)
{
    if (surface.buffer != nullptr) {
        if (surface.acknowledged == 0)
            faults << QStringLiteral("a picture before the first configuration");
        readPicture(surface);
    }
    const bool isNew = surface.configuration == 0 || surface.pending.size != surface.current.size;
    const bool isSeen = surface.pending.pictures > surface.current.pictures;
    surface.current = surface.pending;
    if (surface.role != nullptr && isNew && !holdsConfigurations)
        configure(surface);
    if (isSeen)
        coverPointer(surface);
}

void LayerShellServer::Compositor::readPicture(Surface &surface)
{
    wl_resource *buffer = std::exchange(surface.buffer, nullptr);
    wl_shm_buffer *pixels = wl_shm_buffer_get(buffer);
    Panel &panel = surface.pending;
    ++panel.pictures;
    panel.pixels = QSize(wl_shm_buffer_get_width(pixels), wl_shm_buffer_get_height(pixels));
    wl_shm_buffer_begin_access(pixels);
    const auto *first = static_cast<const std::uint32_t *>(wl_shm_buffer_get_data(pixels));
    panel.centre = first[panel.pixels.height() / 2 * panel.pixels.width() + panel.pixels.width() / 2];
    wl_shm_buffer_end_access(pixels);
    wl_buffer_send_release(buffer);
}

void LayerShellServer::Compositor::configure(Surface &surface)
{
    QSize size = surface.current.size;
    if (!size.isValid()) // Held at all edges.
        size = outputSize - QSize(0, surface.current.zone < 0 ? 0 : bar_);
    surface.configuration = ++serial_;
    zwlr_layer_surface_v1_send_configure(surface.role, serial_, static_cast<std::uint32_t>(size.width()),
                                         static_cast<std::uint32_t>(size.height()));
}

void LayerShellServer::Compositor::coverPointer(const Surface &surface)
{
    if (!pointer || surface.current.output < 0 || surface.current.size.isValid())
        return;
    const QRect covered(outputs_.at(static_cast<std::size_t>(surface.current.output)).corner(), outputSize);
    if (!covered.contains(*pointer))
        return;
    const QPoint place = *pointer - covered.topLeft();
    forDevices(pointers_, surface, [&](wl_resource *device) {
        wl_pointer_send_enter(device, ++serial_, surface.proxy, wl_fixed_from_int(place.x()),
                              wl_fixed_from_int(place.y()));
        wl_pointer_send_frame(device);
    });
}

void LayerShellServer::Compositor::forDevices(const std::vector<wl_resource *> &devices,
                                              const Surface &surface,
                                              const std::function<void(wl_resource *device)> &tell)
{
    for (wl_resource *device : devices) {
        if (wl_resource_get_client(device) == wl_resource_get_client(surface.proxy))
            tell(device);
    }
}

void LayerShellServer::Compositor::offerSeat()
{
    wl_global_create(thread_.display(), &wl_seat_interface, 5, this,
                     [](wl_client *client, void *data, std::uint32_t version, std::uint32_t id) {
                         wl_resource *resource =
                             wl_resource_create(client, &wl_seat_interface, static_cast<int>(version), id);
                         wl_resource_set_implementation(resource, &Requests::seat, data, nullptr);
                         wl_seat_send_capabilities(resource, WL_SEAT_CAPABILITY_POINTER |
                                                                 WL_SEAT_CAPABILITY_KEYBOARD |
                                                                 WL_SEAT_CAPABILITY_TOUCH);
                     });
}

// A layout of the United States.
void LayerShellServer::Compositor::sendLayout(wl_resource *keyboard)
{
    xkb_context *context = xkb_context_new(XKB_CONTEXT_NO_FLAGS);
    const xkb_rule_names names = {nullptr, nullptr, "us", nullptr, nullptr};
    xkb_keymap *keymap = xkb_keymap_new_from_names(context, &names, XKB_KEYMAP_COMPILE_NO_FLAGS);
    const std::unique_ptr<char, decltype(&std::free)> text(
        xkb_keymap_get_as_string(keymap, XKB_KEYMAP_FORMAT_TEXT_V1), std::free);
    const std::size_t size = std::strlen(text.get()) + 1;
    const FileDescriptor file(::memfd_create("keyboard-layout", MFD_CLOEXEC));
    if (::write(file.get(), text.get(), size) == static_cast<ssize_t>(size))
        wl_keyboard_send_keymap(keyboard, WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, file.get(),
                                static_cast<std::uint32_t>(size));
    xkb_keymap_unref(keymap);
    xkb_context_unref(context);
}

void LayerShellServer::Compositor::showPicture(Surface &surface)
{
    for (wl_resource *callback : std::exchange(surface.callbacks, {})) {
        wl_callback_send_done(callback, 0);
        wl_resource_destroy(callback);
    }
}

wl_resource *LayerShellServer::Compositor::outputOf(const Surface &surface, int output) const
{
    const auto &proxies = outputs_.at(static_cast<std::size_t>(output)).proxies;
    const auto same = std::find_if(proxies.begin(), proxies.end(), [&surface](wl_resource *proxy) {
        return wl_resource_get_client(proxy) == wl_resource_get_client(surface.proxy);
    });
    return same == proxies.end() ? nullptr : *same;
}

LayerShellServer::Compositor::Surface *LayerShellServer::Compositor::groundOf(int output)
{
    for (Surface *surface : shown()) {
        const Panel &panel = surface->current;
        const bool isSeen = panel.pictures > 0 && panel.acceptsInput;
        const bool isWhole = !panel.size.isValid() && panel.zone < 0 && panel.destination == outputSize;
        if (panel.layer == ZWLR_LAYER_SHELL_V1_LAYER_BACKGROUND && panel.output == output && isSeen &&
            isWhole)
            return surface;
    }
    return nullptr;
}

void LayerShellServer::Compositor::addOutput(double scale)
{
    Output &output = outputs_.emplace_back();
    output.compositor = this;
    output.index = static_cast<int>(outputs_.size()) - 1;
    output.scale = scale;
    offerOutput(output);
}

void LayerShellServer::Compositor::removeOutput(int output)
{
    wl_global_remove(outputs_.at(static_cast<std::size_t>(output)).global);
}
