#include "WaylandConnection.h"

#include <QDeadlineTimer>

#include <poll.h>

#include <cerrno>
#include <utility>
#include <wayland-client-protocol.h>

std::unique_ptr<WaylandConnection> WaylandConnection::open(const QByteArray &displayName)
{
    // Without a name the library would try a usual one, which may be another session's.
    const QByteArray name = displayName.isEmpty() ? qgetenv("WAYLAND_DISPLAY") : displayName;
    wl_display *display = name.isEmpty() ? nullptr : wl_display_connect(name.constData());
    return display == nullptr ? nullptr : std::unique_ptr<WaylandConnection>(new WaylandConnection(display));
}

WaylandConnection::WaylandConnection(wl_display *display)
    : display_(display)
    , readable_(wl_display_get_fd(display), QSocketNotifier::Read)
    , writable_(wl_display_get_fd(display), QSocketNotifier::Write)
{
    writable_.setEnabled(false);
    QObject::connect(&readable_, &QSocketNotifier::activated, &readable_, [this] { dispatch(); });
    QObject::connect(&writable_, &QSocketNotifier::activated, &writable_, [this] { flush(); });
}

WaylandConnection::~WaylandConnection()
{
    readable_.setEnabled(false);
    writable_.setEnabled(false);
    wl_display_disconnect(display_);
}

bool WaylandConnection::roundTrip(std::chrono::milliseconds limit)
{
    bool isDone = false;
    static const wl_callback_listener listener = {
        .done = [](void *done, wl_callback *, std::uint32_t) { *static_cast<bool *>(done) = true; }};
    wl_callback *callback = wl_display_sync(display_);
    wl_callback_add_listener(callback, &listener, &isDone);
    const QDeadlineTimer deadline(limit);
    do
        wait(std::chrono::milliseconds(deadline.remainingTime()));
    while (!isDone && !isLost_ && !deadline.hasExpired());
    wl_callback_destroy(callback);
    return isDone;
}

void WaylandConnection::dispatch()
{
    wait(std::chrono::milliseconds::zero());
}

void WaylandConnection::wait(std::chrono::milliseconds limit)
{
    if (isLost_)
        return;
    bool hasDelivered = false;
    while (wl_display_prepare_read(display_) != 0) {
        if (wl_display_dispatch_pending(display_) < 0)
            return lose();
        hasDelivered = true;
    }
    flush();
    pollfd socket = {wl_display_get_fd(display_), POLLIN, 0};
    const auto patience = hasDelivered ? 0 : static_cast<int>(limit.count());
    if (poll(&socket, 1, patience) > 0) {
        if (wl_display_read_events(display_) < 0)
            return lose();
    } else {
        wl_display_cancel_read(display_);
    }
    if (wl_display_dispatch_pending(display_) < 0)
        return lose();
    flush();
}

void WaylandConnection::flush()
{
    if (isLost_)
        return;
    const bool isSent = wl_display_flush(display_) >= 0;
    // A compositor that is gone is noticed by reading, which also tells its last words.
    writable_.setEnabled(!isSent && errno == EAGAIN);
}

void WaylandConnection::lose()
{
    if (std::exchange(isLost_, true))
        return;
    readable_.setEnabled(false);
    writable_.setEnabled(false);
    // Not from within a call of this class: the handler may destroy it.
    QMetaObject::invokeMethod(
        &readable_,
        [this] {
            if (lostHandler_)
                lostHandler_();
        },
        Qt::QueuedConnection);
}
