#include "LayerSurface.h"

#include <QFocusEvent>
#include <QImage>

#include <algorithm>
#include <cmath>
#include <fractional-scale-client-header.h>
#include <layer-shell-client-header.h>
#include <utility>
#include <viewporter-client-header.h>
#include <wayland-client-protocol.h>

namespace {

constexpr double scaleUnit = 120; // Of the protocol.
constexpr auto purpose = "velmora";

} // namespace

struct LayerSurface::Listeners {
    static LayerSurface &self(void *data) { return *static_cast<LayerSurface *>(data); }

    static constexpr zwlr_layer_surface_v1_listener role = {
        // The size is the one that was asked for: only a surface held at opposite edges is given another.
        .configure = [](void *data, zwlr_layer_surface_v1 *, std::uint32_t serial, std::uint32_t,
                        std::uint32_t) { self(data).configure(serial); },
        .closed =
            [](void *data, zwlr_layer_surface_v1 *) {
                const auto removed = self(data).handlers_.removed; // Destroys this object.
                removed();
            }};

    // What later versions of the interface than the one in use have is not called, and not everywhere known.
    static constexpr wl_surface_listener surface = [] {
        wl_surface_listener calls{};
        calls.enter = [](void *data, wl_surface *, wl_output *output) {
            self(data).entered_.insert(output);
            self(data).changeScale();
        };
        calls.leave = [](void *data, wl_surface *, wl_output *output) {
            self(data).entered_.erase(output);
            self(data).changeScale();
        };
        return calls;
    }();

    static constexpr wp_fractional_scale_v1_listener fraction = {
        .preferred_scale = [](void *data, wp_fractional_scale_v1 *, std::uint32_t scale) {
            self(data).preferredScale_ = scale / scaleUnit;
            self(data).changeScale();
        }};

    static constexpr wl_callback_listener shown = {
        .done = [](void *data, wl_callback *callback, std::uint32_t) {
            wl_callback_destroy(callback);
            self(data).shown_ = nullptr;
            self(data).handleShown();
        }};
};

LayerSurface::LayerSurface(Dependencies dependencies, const PanelSurfaceTraits &traits,
                           const PanelSurface::Handlers &handlers, const QRect &frame)
    : dependencies_(dependencies)
    , traits_(traits)
    , handlers_(handlers)
    , frame_(frame)
    , surface_(wl_compositor_create_surface(dependencies.shell.compositor()))
    , buffers_(dependencies.shell.memory(), [this] {
        if (wantsPicture_)
            requestPicture();
    })
{
    wl_surface_add_listener(surface_, &Listeners::surface, this);
    const LayerShell &shell = dependencies_.shell;
    if (shell.viewporter() != nullptr)
        viewport_ = wp_viewporter_get_viewport(shell.viewporter(), surface_);
    if (viewport_ != nullptr && shell.scales() != nullptr) {
        fraction_ = wp_fractional_scale_manager_v1_get_fractional_scale(shell.scales(), surface_);
        wp_fractional_scale_v1_add_listener(fraction_, &Listeners::fraction, this);
    }
    dependencies_.seat.listen(surface_, [this](QEvent &event) { handleInput(event); });
    giveRole();
    shell.connection().flush();
}

void LayerSurface::giveRole()
{
    const LayerShell &shell = dependencies_.shell;
    wl_output *output = traits_.followsUser ? nullptr : dependencies_.outputs.outputAt(frame_.center());
    role_ = zwlr_layer_shell_v1_get_layer_surface(shell.shell(), surface_, output,
                                                  ZWLR_LAYER_SHELL_V1_LAYER_OVERLAY, purpose);
    zwlr_layer_surface_v1_add_listener(role_, &Listeners::role, this);
    if (traits_.takesKeyboard) {
        keyboard_.emplace(
            shell, surface_, role_,
            KeyboardClaim::Handlers{.isPointedAt = [this] { return isPointedAt(); },
                                    .turnedAway =
                                        [this] {
                                            QFocusEvent event(QEvent::FocusOut, Qt::ActiveWindowFocusReason);
                                            const auto input = handlers_.input; // May destroy this object.
                                            input(event);
                                        }});
        fringe_.emplace(shell, surface_);
    }
    place();
    if (!traits_.acceptsMouse) {
        wl_region *nothing = wl_compositor_create_region(shell.compositor());
        wl_surface_set_input_region(surface_, nothing);
        wl_region_destroy(nothing);
    }
    wl_surface_commit(surface_); // Without a picture: asks for the first configuration.
}

LayerSurface::~LayerSurface()
{
    dependencies_.seat.ignore(surface_);
    keyboard_.reset();
    fringe_.reset();
    if (shown_ != nullptr)
        wl_callback_destroy(shown_);
    if (viewport_ != nullptr)
        wp_viewport_destroy(viewport_);
    if (fraction_ != nullptr)
        wp_fractional_scale_v1_destroy(fraction_);
    zwlr_layer_surface_v1_destroy(role_);
    wl_surface_destroy(surface_);
    dependencies_.shell.connection().flush();
}

void LayerSurface::handleInput(QEvent &event)
{
    if (keyboard_ && event.type() == QEvent::FocusIn)
        keyboard_->handleEnter();
    if (keyboard_ && event.type() == QEvent::FocusOut) {
        keyboard_->handleLeave();
        return;
    }
    const auto input = handlers_.input; // May destroy this object.
    input(event);
}

void LayerSurface::turnAway()
{
    if (keyboard_)
        keyboard_->turnAway();
}

bool LayerSurface::isPointedAt() const
{
    const wl_surface *place = dependencies_.seat.underPointer();
    return place != nullptr && (place == surface_ || (fringe_ && place == fringe_->surface()));
}

void LayerSurface::handleShown()
{
    if (keyboard_)
        keyboard_->handleShown();
    if (wantsPicture_)
        draw();
}

QRect LayerSurface::layerArea() const
{
    return traits_.followsUser ? dependencies_.outputs.mainLayerArea()
                               : dependencies_.outputs.layerAreaAt(frame_.center());
}

void LayerSurface::place()
{
    if (const QSize size = frame_.size(); std::exchange(placedSize_, size) != size)
        zwlr_layer_surface_v1_set_size(role_, static_cast<std::uint32_t>(size.width()),
                                       static_cast<std::uint32_t>(size.height()));
    const LayerPlacement placement = layerPlacement(frame_, layerArea());
    if (std::exchange(placement_, placement) == placement)
        return;
    const QMargins &margins = placement.margins;
    zwlr_layer_surface_v1_set_anchor(role_, placement.anchors);
    zwlr_layer_surface_v1_set_margin(role_, margins.top(), margins.right(), margins.bottom(), margins.left());
}

void LayerSurface::configure(std::uint32_t serial)
{
    zwlr_layer_surface_v1_ack_configure(role_, serial);
    const bool isFirst = !std::exchange(isConfigured_, true);
    if (isFirst)
        draw();
    else
        requestPicture(); // What has been acknowledged counts from the next commit.
}

void LayerSurface::changeScale()
{
    if (isConfigured_)
        requestPicture();
}

double LayerSurface::scale() const
{
    if (preferredScale_ > 0)
        return preferredScale_;
    const WaylandOutputs &outputs = dependencies_.outputs;
    double finest = 0;
    for (const wl_output *output : entered_)
        finest = std::max(finest, outputs.scaleOf(output));
    if (finest == 0) // Not on screen yet.
        finest = outputs.scaleOf(traits_.followsUser ? nullptr : outputs.outputAt(frame_.center()));
    // Without the viewport a picture has a whole number of pixels a point.
    return viewport_ != nullptr ? finest : std::ceil(finest);
}

void LayerSurface::requestPicture()
{
    wantsPicture_ = true;
    if (isConfigured_ && shown_ == nullptr)
        drawSoon();
}

// In the event loop: everything that changes together is drawn together.
void LayerSurface::drawSoon()
{
    if (std::exchange(drawsSoon_, true))
        return;
    QMetaObject::invokeMethod(
        &later_,
        [this] {
            drawsSoon_ = false;
            if (wantsPicture_ && shown_ == nullptr)
                draw();
        },
        Qt::QueuedConnection);
}

void LayerSurface::draw()
{
    wantsPicture_ = false;
    const double pixelsPerPoint = scale();
    present(handlers_.draw(pixelsPerPoint), pixelsPerPoint);
}

void LayerSurface::present(const QImage &picture, double scale)
{
    wl_buffer *buffer = buffers_.hold(picture);
    if (buffer == nullptr) {
        wantsPicture_ = true; // Drawn as soon as the compositor gives a buffer back.
        return;
    }
    place();
    if (viewport_ != nullptr)
        wp_viewport_set_destination(viewport_, frame_.width(), frame_.height());
    else
        wl_surface_set_buffer_scale(surface_, static_cast<int>(scale));
    if (fringe_)
        fringe_->surround(frame_.size());
    wl_surface_attach(surface_, buffer, 0, 0);
    wl_surface_damage_buffer(surface_, 0, 0, picture.width(), picture.height());
    shown_ = wl_surface_frame(surface_);
    wl_callback_add_listener(shown_, &Listeners::shown, this);
    wl_surface_commit(surface_);
    dependencies_.shell.connection().flush();
}
