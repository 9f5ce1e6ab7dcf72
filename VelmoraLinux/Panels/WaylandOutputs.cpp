#include "WaylandOutputs.h"

#include "LayerPlacement.h"

#include <algorithm>
#include <cmath>
#include <wayland-client-protocol.h>
#include <xdg-output-client-header.h>

namespace {

constexpr std::uint32_t outputVersion = 3; // Tells the scale, and can be released.

bool swapsSides(std::int32_t transform)
{
    return transform == WL_OUTPUT_TRANSFORM_90 || transform == WL_OUTPUT_TRANSFORM_270 ||
           transform == WL_OUTPUT_TRANSFORM_FLIPPED_90 || transform == WL_OUTPUT_TRANSFORM_FLIPPED_270;
}

QRect partOf(const QRect &whole, const QRectF &part)
{
    const auto along = [](int start, int length, double share) {
        return start + static_cast<int>(std::lround(length * share));
    };
    const QPoint first(along(whole.x(), whole.width(), part.left()),
                       along(whole.y(), whole.height(), part.top()));
    const QPoint end(along(whole.x(), whole.width(), part.right()),
                     along(whole.y(), whole.height(), part.bottom()));
    return {first, end - QPoint(1, 1)};
}

} // namespace

struct WaylandOutputs::Listeners {
    static Output &self(void *data) { return *static_cast<Output *>(data); }

    static constexpr wl_output_listener output = {
        .geometry =
            [](void *data, wl_output *, std::int32_t x, std::int32_t y, std::int32_t, std::int32_t,
               std::int32_t, const char *, const char *, std::int32_t transform) {
                self(data).corner = QPoint(x, y);
                self(data).isTurned = swapsSides(transform);
            },
        .mode =
            [](void *data, wl_output *, std::uint32_t flags, std::int32_t width, std::int32_t height,
               std::int32_t) {
                if ((flags & WL_OUTPUT_MODE_CURRENT) != 0)
                    self(data).pixels = QSize(width, height);
            },
        .done = [](void *, wl_output *) {},
        .scale = [](void *data, wl_output *, std::int32_t scale) { self(data).scale = std::max(1, scale); },
        .name = [](void *, wl_output *, const char *) {},
        .description = [](void *, wl_output *, const char *) {}};

    static constexpr zxdg_output_v1_listener description = {
        .logical_position = [](void *data, zxdg_output_v1 *, std::int32_t x,
                               std::int32_t y) { self(data).logical.moveTopLeft(QPoint(x, y)); },
        .logical_size = [](void *data, zxdg_output_v1 *, std::int32_t width,
                           std::int32_t height) { self(data).logical.setSize(QSize(width, height)); },
        .done = [](void *, zxdg_output_v1 *) {},
        .name = [](void *, zxdg_output_v1 *, const char *) {},
        .description = [](void *, zxdg_output_v1 *, const char *) {}};
};

QSize WaylandOutputs::Output::turnedPixels() const
{
    return isTurned ? pixels.transposed() : pixels;
}

QRect WaylandOutputs::Output::frame() const
{
    return logical.isEmpty() ? QRect(corner, turnedPixels() / scale) : logical;
}

// The protocol's own scale is rounded up where the screen's is not whole.
double WaylandOutputs::Output::exactScale() const
{
    if (logical.isEmpty() || pixels.isEmpty())
        return scale;
    return double(turnedPixels().width()) / logical.width();
}

WaylandOutputs::~WaylandOutputs()
{
    for (Output &output : outputs_)
        release(output);
}

void WaylandOutputs::add(const LayerShell &shell, std::uint32_t name, std::uint32_t version)
{
    void *proxy =
        wl_registry_bind(shell.registry(), name, &wl_output_interface, std::min(version, outputVersion));
    Output &output = outputs_.emplace_back();
    output.name = name;
    output.proxy = static_cast<wl_output *>(proxy);
    wl_output_add_listener(output.proxy, &Listeners::output, &output);
    describe(shell, output);
}

void WaylandOutputs::describe(const LayerShell &shell)
{
    for (Output &output : outputs_)
        describe(shell, output);
}

void WaylandOutputs::describe(const LayerShell &shell, Output &output)
{
    if (shell.outputManager() == nullptr || output.description != nullptr)
        return;
    output.description = zxdg_output_manager_v1_get_xdg_output(shell.outputManager(), output.proxy);
    zxdg_output_v1_add_listener(output.description, &Listeners::description, &output);
}

void WaylandOutputs::remove(std::uint32_t name)
{
    outputs_.remove_if([name](Output &output) {
        if (output.name != name)
            return false;
        release(output);
        return true;
    });
}

void WaylandOutputs::disconnect()
{
    lastMain_ = mainLayerArea();
    for (Output &output : outputs_)
        release(output);
    outputs_.clear();
}

void WaylandOutputs::release(Output &output)
{
    if (output.description != nullptr)
        zxdg_output_v1_destroy(output.description);
    if (wl_output_get_version(output.proxy) >= WL_OUTPUT_RELEASE_SINCE_VERSION)
        wl_output_release(output.proxy);
    else
        wl_output_destroy(output.proxy);
}

QRect WaylandOutputs::mainWorkArea() const
{
    return withoutOtherBars(mainLayerArea());
}

QRect WaylandOutputs::workAreaAt(QPoint point) const
{
    return withoutOtherBars(layerAreaAt(point));
}

QRect WaylandOutputs::mainLayerArea() const
{
    return outputs_.empty() ? lastMain_ : layerAreaOf(outputs_.front());
}

QRect WaylandOutputs::layerAreaAt(QPoint point) const
{
    const Output *output = holderOf(point);
    return output == nullptr ? mainLayerArea() : layerAreaOf(*output);
}

QRect WaylandOutputs::layerAreaOf(const Output &output) const
{
    const QRect whole = output.frame();
    const bool isClicked = click_ && whole.contains(*click_);
    return output.usable.isEmpty() ? whole
                                   : workAreaBeside(isClicked ? click_ : std::nullopt, whole, output.usable);
}

QRect WaylandOutputs::withoutOtherBars(const QRect &area) const
{
    if (!freePart_ || outputs_.empty())
        return area;
    QRect all;
    for (const Output &output : outputs_)
        all |= output.frame();
    return area & partOf(all, freePart_());
}

const WaylandOutputs::Output *WaylandOutputs::holderOf(QPoint point) const
{
    const auto holder = std::find_if(outputs_.begin(), outputs_.end(), [point](const Output &output) {
        return output.frame().contains(point);
    });
    return holder == outputs_.end() ? nullptr : &*holder;
}

wl_output *WaylandOutputs::outputAt(QPoint point) const
{
    const Output *output = holderOf(point);
    return output == nullptr ? nullptr : output->proxy;
}

QRect WaylandOutputs::frameAt(QPoint point) const
{
    return frameOf(outputAt(point));
}

QRect WaylandOutputs::frameOf(const wl_output *output) const
{
    for (const Output &known : outputs_) {
        if (known.proxy == output)
            return known.frame();
    }
    return {};
}

std::vector<wl_output *> WaylandOutputs::all() const
{
    std::vector<wl_output *> all;
    for (const Output &output : outputs_)
        all.push_back(output.proxy);
    return all;
}

void WaylandOutputs::setUsableSize(const wl_output *output, QSize size)
{
    for (Output &known : outputs_) {
        if (known.proxy == output)
            known.usable = size;
    }
}

double WaylandOutputs::scaleOf(const wl_output *output) const
{
    double finest = 1;
    for (const Output &known : outputs_) {
        if (known.proxy == output)
            return known.exactScale();
        finest = std::max(finest, known.exactScale());
    }
    return finest;
}
