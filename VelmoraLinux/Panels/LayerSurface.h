#pragma once

#include "KeyboardClaim.h"
#include "LayerPlacement.h"
#include "LayerShell.h"
#include "PanelFringe.h"
#include "PixelBuffers.h"
#include "SeatInput.h"
#include "WaylandOutputs.h"

#include <VelmoraPlatform/PanelSurfaces.h>

#include <QObject>

#include <memory>
#include <optional>
#include <set>

struct wl_callback;
struct wl_surface;
struct wp_fractional_scale_v1;
struct wp_viewport;
struct zwlr_layer_surface_v1;

// One surface of the layer shell while it is on screen. Frame, scale and picture change together, in one commit, so
// that nothing is seen in between.
class LayerSurface {
public:
    struct Dependencies {
        LayerShell &shell;
        const WaylandOutputs &outputs;
        SeatInput &seat;
    };

    // Appears as soon as the compositor is ready for its first picture.
    LayerSurface(Dependencies dependencies, const PanelSurfaceTraits &traits,
                 const PanelSurface::Handlers &handlers, const QRect &frame);
    ~LayerSurface();
    Q_DISABLE_COPY_MOVE(LayerSurface)

    void setFrame(const QRect &frame) { frame_ = frame; }

    void requestPicture();

    // The user has turned to something else, of which the compositor does not tell. May destroy this object.
    void turnAway();

    [[nodiscard]] wl_surface *proxy() const { return surface_; }

private:
    void giveRole();
    void handleInput(QEvent &event);
    [[nodiscard]] bool isPointedAt() const;
    void handleShown();
    void configure(std::uint32_t serial);
    void drawSoon();
    void draw();
    void place();
    void present(const QImage &picture, double scale);
    void changeScale();
    [[nodiscard]] double scale() const;
    [[nodiscard]] QRect layerArea() const;

    struct Listeners;

    Dependencies dependencies_;
    PanelSurfaceTraits traits_;
    const PanelSurface::Handlers &handlers_;
    QRect frame_;
    QSize placedSize_;
    LayerPlacement placement_;
    wl_surface *surface_;
    zwlr_layer_surface_v1 *role_ = nullptr;
    std::optional<KeyboardClaim> keyboard_;
    std::optional<PanelFringe> fringe_;
    wp_fractional_scale_v1 *fraction_ = nullptr;
    wp_viewport *viewport_ = nullptr;
    wl_callback *shown_ = nullptr; // Answered when the last picture is on screen and the next one may follow.
    double preferredScale_ = 0;    // Zero: the compositor does not tell.
    std::set<wl_output *> entered_;
    bool isConfigured_ = false;
    bool wantsPicture_ = false;
    bool drawsSoon_ = false;
    PixelBuffers buffers_;
    QObject later_; // Steps that end with this object.
};
