#pragma once

#include "BareDesktop.h"
#include "ClickLocator.h"
#include "LayerSurface.h"
#include "SeatInput.h"
#include "WaylandOutputs.h"

#include <VelmoraPlatform/DelayedSteps.h>
#include <VelmoraPlatform/PanelSurfaces.h>

#include <QByteArray>

#include <chrono>
#include <memory>
#include <vector>

// Panels by the protocol wlr-layer-shell-unstable-v1, on a connection of our own. When that is lost the panels are
// removed, and it is made again after a while.
class LayerPanels : public PanelSurfaces {
public:
    // Null when the compositor does not offer the protocol. An empty name stands for $WAYLAND_DISPLAY.
    [[nodiscard]] static std::unique_ptr<LayerPanels> create(Scheduler &scheduler, QByteArray display = {});
    ~LayerPanels() override;
    Q_DISABLE_COPY_MOVE(LayerPanels)

    [[nodiscard]] bool areOffered() const override { return shell_ != nullptr && shell_->isComplete(); }

    [[nodiscard]] std::unique_ptr<PanelSurface> makeSurface(const PanelSurfaceTraits &traits,
                                                            PanelSurface::Handlers handlers) override;

    // Where the icon is on which a bar reports a click, `hint` being what the bar knows of its place. `done` runs in
    // the event loop, unless another click comes before.
    void locateIcon(QPoint hint, std::function<void(const QRect &icon)> done);

    // Layer-shell tells of its own bars only. `freePart` tells which part of all screens together the others leave, in
    // fractions of their whole.
    void setFreePart(std::function<QRectF()> freePart) { outputs_.setFreePart(std::move(freePart)); }

    // Frames of panels are in these screens' points.
    [[nodiscard]] const Screens &screens() const { return outputs_; }

private:
    class Surface;

    LayerPanels(Scheduler &scheduler, QByteArray display);
    [[nodiscard]] bool connect();
    void disconnect();
    // For as long as a panel has to know of it when the user turns away.
    void watchBareDesktop();
    void turnAway();
    [[nodiscard]] QRect iconAt(const std::optional<QPoint> &click);
    void reconnectLater();

    Scheduler &scheduler_;
    QByteArray display_;
    std::chrono::nanoseconds retryDelay_;
    std::unique_ptr<WaylandConnection> connection_;
    std::unique_ptr<LayerShell> shell_;
    WaylandOutputs outputs_;
    SeatInput seat_;
    std::unique_ptr<ClickLocator> locator_;
    std::vector<Surface *> shown_;
    std::unique_ptr<BareDesktop> bareDesktop_;
    DelayedSteps connectionSteps_;
};
