#include "LayerShellServer.h"

#include "LayerShellCompositor.h"

#include <cmath>
#include <fractional-scale-server-header.h>
#include <layer-shell-server-header.h>
#include <linux/input-event-codes.h>
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
    if (compositor_)
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

void LayerShellServer::addOutput()
{
    run([](Compositor &compositor) { compositor.addOutput(1); });
}

void LayerShellServer::putPointer(QPoint place)
{
    run([place](Compositor &compositor) { compositor.pointer = place; });
}

void LayerShellServer::movePointer(QPointF place)
{
    run([place](Compositor &compositor) {
        const auto &panel = compositor.newest();
        Compositor::forDevices(compositor.pointers(), panel, [&](wl_resource *device) {
            wl_pointer_send_enter(device, 1, panel.proxy, wl_fixed_from_double(place.x()),
                                  wl_fixed_from_double(place.y()));
            wl_pointer_send_frame(device);
        });
    });
}

void LayerShellServer::leavePointer()
{
    run([](Compositor &compositor) {
        const auto &panel = compositor.newest();
        Compositor::forDevices(compositor.pointers(), panel, [&](wl_resource *device) {
            wl_pointer_send_leave(device, 1, panel.proxy);
            wl_pointer_send_frame(device);
        });
    });
}

void LayerShellServer::movePointerToDesktop(int output)
{
    run([output](Compositor &compositor) {
        if (const auto *ground = compositor.groundOf(output))
            Compositor::forDevices(compositor.pointers(), *ground, [&](wl_resource *device) {
                wl_pointer_send_enter(device, 1, ground->proxy, wl_fixed_from_int(100),
                                      wl_fixed_from_int(100));
                wl_pointer_send_frame(device);
            });
    });
}

void LayerShellServer::leavePointerFromDesktop(int output)
{
    run([output](Compositor &compositor) {
        if (const auto *ground = compositor.groundOf(output))
            Compositor::forDevices(compositor.pointers(), *ground, [&](wl_resource *device) {
                wl_pointer_send_leave(device, 1, ground->proxy);
                wl_pointer_send_frame(device);
            });
    });
}

void LayerShellServer::closeDesktop(int output)
{
    run([output](Compositor &compositor) {
        if (const auto *ground = compositor.groundOf(output))
            zwlr_layer_surface_v1_send_closed(ground->role);
    });
}

void LayerShellServer::pressLeftButton(bool isDown)
{
    run([isDown](Compositor &compositor) {
        Compositor::forDevices(compositor.pointers(), compositor.newest(), [&](wl_resource *device) {
            wl_pointer_send_button(device, 1, 0, BTN_LEFT,
                                   isDown ? WL_POINTER_BUTTON_STATE_PRESSED
                                          : WL_POINTER_BUTTON_STATE_RELEASED);
            wl_pointer_send_frame(device);
        });
    });
}

void LayerShellServer::turnWheel(int clicks)
{
    run([clicks](Compositor &compositor) {
        Compositor::forDevices(compositor.pointers(), compositor.newest(), [&](wl_resource *device) {
            wl_pointer_send_axis_discrete(device, WL_POINTER_AXIS_VERTICAL_SCROLL, clicks);
            wl_pointer_send_axis(device, 0, WL_POINTER_AXIS_VERTICAL_SCROLL, wl_fixed_from_int(10 * clicks));
            wl_pointer_send_frame(device);
        });
    });
}

void LayerShellServer::touch(const std::vector<QPointF> &places)
{
    run([&places](Compositor &compositor) {
        const auto &panel = compositor.newest();
        Compositor::forDevices(compositor.touchScreens(), panel, [&](wl_resource *device) {
            wl_touch_send_down(device, 1, 0, panel.proxy, 7, wl_fixed_from_double(places.front().x()),
                               wl_fixed_from_double(places.front().y()));
            for (const QPointF &place : places)
                wl_touch_send_motion(device, 0, 7, wl_fixed_from_double(place.x()),
                                     wl_fixed_from_double(place.y()));
            wl_touch_send_up(device, 1, 0, 7);
            wl_touch_send_frame(device);
        });
    });
}

void LayerShellServer::giveKeyboard(bool isGiven)
{
    run([isGiven](Compositor &compositor) {
        const auto &panel = compositor.newest();
        Compositor::forDevices(compositor.keyboards(), panel, [&](wl_resource *device) {
            wl_array pressed = {};
            if (isGiven)
                wl_keyboard_send_enter(device, 1, panel.proxy, &pressed);
            else
                wl_keyboard_send_leave(device, 1, panel.proxy);
        });
    });
}

void LayerShellServer::interruptKeyboard()
{
    run([](Compositor &compositor) {
        const auto &panel = compositor.newest();
        Compositor::forDevices(compositor.keyboards(), panel, [&](wl_resource *device) {
            wl_array pressed = {};
            wl_keyboard_send_leave(device, 1, panel.proxy);
            wl_keyboard_send_enter(device, 1, panel.proxy, &pressed);
        });
    });
}

void LayerShellServer::pressKey(std::uint32_t code, bool isDown)
{
    run([=](Compositor &compositor) {
        Compositor::forDevices(compositor.keyboards(), compositor.newest(), [&](wl_resource *device) {
            wl_keyboard_send_key(device, 1, 0, code,
                                 isDown ? WL_KEYBOARD_KEY_STATE_PRESSED : WL_KEYBOARD_KEY_STATE_RELEASED);
        });
    });
}

void LayerShellServer::setKeyRepeat(int timesPerSecond, int delay)
{
    run([=](Compositor &compositor) {
        for (wl_resource *device : compositor.keyboards())
            wl_keyboard_send_repeat_info(device, timesPerSecond, delay);
    });
}

void LayerShellServer::loseKeyboardOnDemand()
{
    run([](Compositor &compositor) { compositor.losesKeyboardOnDemand = true; });
}

QList<std::uint32_t> LayerShellServer::keyboardRequests()
{
    QList<std::uint32_t> requests;
    run([&requests](Compositor &compositor) { requests = compositor.keyboardRequests; });
    return requests;
}
