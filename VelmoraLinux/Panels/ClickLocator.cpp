#include "ClickLocator.h"

#include <QImage>
#include <QMouseEvent>

#include <algorithm>
#include <layer-shell-client-header.h>
#include <utility>
#include <viewporter-client-header.h>
#include <wayland-client-protocol.h>

using namespace std::chrono_literals;

namespace {

// Some bars report a click when the button goes down, and the pointer is theirs until it goes up.
constexpr auto patience = 250ms;
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

// A surface as large as a screen, or as its work area.
struct ClickLocator::Cover {
    // One that is not `seen` never gets a picture.
    Cover(ClickLocator &locator, wl_output *screen, bool seen);
    ~Cover();
    Q_DISABLE_COPY_MOVE(Cover)

    ClickLocator &owner;
    wl_output *output;
    bool isSeen;
    bool isMeasured = false;
    wl_surface *surface;
    zwlr_layer_surface_v1 *role;
    wp_viewport *viewport = nullptr;
    PixelBuffers buffers;
};

struct ClickLocator::Listeners {
    static constexpr zwlr_layer_surface_v1_listener role = {
        .configure =
            [](void *data, zwlr_layer_surface_v1 *role, std::uint32_t serial, std::uint32_t width,
               std::uint32_t height) {
                zwlr_layer_surface_v1_ack_configure(role, serial);
                auto &cover = *static_cast<Cover *>(data);
                cover.owner.measure(cover, QSize(static_cast<int>(width), static_cast<int>(height)));
            },
        .closed =
            [](void *data, zwlr_layer_surface_v1 *) {
                auto &cover = *static_cast<Cover *>(data);
                cover.isMeasured = true; // As well as it ever will be.
                cover.owner.finishWhenKnown();
            }};
};

ClickLocator::Cover::Cover(ClickLocator &locator, wl_output *screen, bool seen)
    : owner(locator)
    , output(screen)
    , isSeen(seen)
    , surface(wl_compositor_create_surface(owner.shell_.compositor()))
    , role(zwlr_layer_shell_v1_get_layer_surface(owner.shell_.shell(), surface, output,
                                                 ZWLR_LAYER_SHELL_V1_LAYER_OVERLAY, "velmora-locator"))
    , buffers(owner.shell_.memory(), [] {})
{
    zwlr_layer_surface_v1_add_listener(role, &Listeners::role, this);
    zwlr_layer_surface_v1_set_anchor(role, allEdges);
    if (isSeen) {
        zwlr_layer_surface_v1_set_exclusive_zone(role, beyondBars);
        viewport = wp_viewporter_get_viewport(owner.shell_.viewporter(), surface);
        owner.seat_.listen(surface, [this](QEvent &event) { owner.notice(*this, event); });
    }
    wl_surface_commit(surface);
}

ClickLocator::Cover::~Cover()
{
    owner.seat_.ignore(surface);
    if (viewport != nullptr)
        wp_viewport_destroy(viewport);
    zwlr_layer_surface_v1_destroy(role);
    wl_surface_destroy(surface);
}

ClickLocator::ClickLocator(const LayerShell &shell, WaylandOutputs &outputs, SeatInput &seat,
                           Scheduler &scheduler)
    : shell_(shell)
    , outputs_(outputs)
    , seat_(seat)
    , steps_(scheduler)
{
}

ClickLocator::~ClickLocator()
{
    uncover();
}

void ClickLocator::locate(Wanted wanted, Handler done)
{
    uncover();
    steps_.startOver();
    const bool canSeePointer = shell_.viewporter() != nullptr && seat_.hasPointer();
    wanted_ = canSeePointer ? wanted : Wanted::workAreas;
    done_ = std::move(done);
    pointer_.reset();
    for (wl_output *output : outputs_.all()) {
        covers_.emplace_back(*this, output, false);
        if (wanted_ == Wanted::workAreasAndPointer)
            covers_.emplace_back(*this, output, true);
    }
    shell_.connection().flush();
    steps_.after(patience, [this] { finish(); });
}

void ClickLocator::notice(const Cover &cover, const QEvent &event)
{
    if (event.type() != QEvent::MouseMove || pointer_)
        return;
    const QPointF place = static_cast<const QMouseEvent &>(event).position();
    pointer_ = outputs_.frameOf(cover.output).topLeft() + place.toPoint();
    finishWhenKnown();
}

void ClickLocator::measure(Cover &cover, QSize size)
{
    cover.isMeasured = true;
    if (!cover.isSeen) {
        outputs_.setUsableSize(cover.output, size);
        return finishWhenKnown();
    }
    wp_viewport_set_destination(cover.viewport, size.width(), size.height());
    wl_surface_attach(cover.surface, cover.buffers.hold(nothing()), 0, 0);
    wl_surface_damage_buffer(cover.surface, 0, 0, 1, 1);
    wl_surface_commit(cover.surface);
}

// Not from within the connection's calls: the handler may do anything.
void ClickLocator::finishWhenKnown()
{
    const bool areMeasured =
        std::all_of(covers_.begin(), covers_.end(), [](const Cover &cover) { return cover.isMeasured; });
    if (areMeasured && (pointer_ || wanted_ == Wanted::workAreas))
        steps_.after({}, [this] { finish(); });
}

void ClickLocator::finish()
{
    steps_.startOver();
    uncover();
    const Handler done = std::exchange(done_, nullptr);
    if (done)
        done(pointer_);
}

void ClickLocator::uncover()
{
    covers_.clear();
    shell_.connection().flush();
}
