#pragma once

#include <QByteArray>
#include <QSocketNotifier>

#include <chrono>
#include <functional>
#include <memory>
#include <wayland-client-core.h>

// A connection to the Wayland compositor of our own, beside the one of the toolkit.
//
// Events are delivered from the event loop, on the main thread. When the compositor goes away or ends the
// connection, the handler of `setLostHandler` runs once, from the event loop; later calls do nothing.
class WaylandConnection {
public:
    // Null when there is no such compositor. An empty name stands for $WAYLAND_DISPLAY.
    [[nodiscard]] static std::unique_ptr<WaylandConnection> open(const QByteArray &displayName = {});
    ~WaylandConnection();
    Q_DISABLE_COPY_MOVE(WaylandConnection)

    [[nodiscard]] wl_display *display() const { return display_; }

    [[nodiscard]] bool isLost() const { return isLost_; }

    void setLostHandler(std::function<void()> handler) { lostHandler_ = std::move(handler); }

    // Waits until everything asked for so far has been answered; false when that takes longer than `limit`.
    // For the start only: afterwards nothing may wait for the compositor.
    [[nodiscard]] bool roundTrip(std::chrono::milliseconds limit);
    // Delivers what has arrived, without waiting.
    void dispatch();
    // Delivers what has arrived; waits for it for up to `limit` if there is nothing yet.
    void wait(std::chrono::milliseconds limit);
    void flush();

private:
    explicit WaylandConnection(wl_display *display);
    void lose();

    wl_display *display_;
    bool isLost_ = false;
    std::function<void()> lostHandler_;
    QSocketNotifier readable_;
    QSocketNotifier writable_; // On while requests wait for room in the socket.
};
