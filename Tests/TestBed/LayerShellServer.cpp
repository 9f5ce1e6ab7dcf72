#include "LayerShellServer.h"

#include "LayerShellCompositor.h"

#include <cmath>
#include <fractional-scale-server-header.h>
#include <layer-shell-server-header.h>
#include <utility>
#include <wayland-server.h>

LayerShellServer::LayerShellServer(Offer offer)
    : offer_(std::move(offer))
{
    start();
}

LayerShellServer::~LayerShellServer()
{
    stop();
}

QByteArray LayerShellServer::display() const
{
    return folder_.filePath(QStringLiteral("wayland")).toLocal8Bit();
}

void LayerShellServer::start()
{
    compositor_ = std::make_unique<Compositor>(offer_, display());
}

void LayerShellServer::stop()
{
    compositor_.reset();
}

void LayerShellServer::run(const std::function<void(Compositor &)> &action)
{
    compositor_->run(action);
}

std::vector<LayerShellServer::Panel> LayerShellServer::panels()
{
    std::vector<Panel> panels;
    run([&panels](Compositor &compositor) {
        for (const auto *surface : compositor.shown())
            panels.push_back(surface->current);
    });
    return panels;
}

QStringList LayerShellServer::faults()
{
    QStringList faults;
    run([&faults](Compositor &compositor) { faults = compositor.faults; });
    return faults;
}

bool LayerShellServer::isAcknowledged()
{
    bool isAcknowledged = false;
    run([&](Compositor &compositor) {
        const auto &newest = compositor.newest();
        isAcknowledged = newest.acknowledged == newest.configuration;
    });
    return isAcknowledged;
}

void LayerShellServer::holdConfigurations()
{
    run([](Compositor &compositor) { compositor.holdsConfigurations = true; });
}

void LayerShellServer::configure()
{
    run([](Compositor &compositor) { compositor.configure(compositor.newest()); });
}

void LayerShellServer::showPicture()
{
    run([](Compositor &compositor) { Compositor::showPicture(compositor.newest()); });
}

void LayerShellServer::enterOutput(int output)
{
    run([output](Compositor &compositor) {
        const auto &newest = compositor.newest();
        wl_surface_send_enter(newest.proxy, compositor.outputOf(newest, output));
    });
}

void LayerShellServer::leaveOutput(int output)
{
    run([output](Compositor &compositor) {
        const auto &newest = compositor.newest();
        wl_surface_send_leave(newest.proxy, compositor.outputOf(newest, output));
    });
}

void LayerShellServer::preferScale(double scale)
{
    run([scale](Compositor &compositor) {
        wp_fractional_scale_v1_send_preferred_scale(compositor.newest().fraction,
                                                    static_cast<std::uint32_t>(std::lround(scale * 120)));
    });
}

void LayerShellServer::close()
{
    run([](Compositor &compositor) { zwlr_layer_surface_v1_send_closed(compositor.newest().role); });
}

void LayerShellServer::removeOutput(int output)
{
    run([output](Compositor &compositor) { compositor.removeOutput(output); });
}
