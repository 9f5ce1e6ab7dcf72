#pragma once

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

// Memory that xcb allocated for us.
struct XcbFree {
    void operator()(void *memory) const { std::free(memory); } // NOLINT(*-no-malloc): xcb asks for it.
};

// A reply, an event or an error of xcb.
template<typename T>
using XcbReply = std::unique_ptr<T, XcbFree>;

struct XcbDisconnect {
    void operator()(xcb_connection_t *connection) const { xcb_disconnect(connection); }
};

// A connection to an X server as xcb knows it.
using XcbServer = std::unique_ptr<xcb_connection_t, XcbDisconnect>;

// Connects to an X server; without a name to that of $DISPLAY. Null when it cannot be reached. `screen` gets
// the number of the screen that the name asks for.
[[nodiscard]] inline XcbServer connectToXServer(const char *displayName = nullptr, int *screen = nullptr)
{
    // xcb gives an object for a failed attempt too, and wants it back.
    XcbServer server(xcb_connect(displayName, screen));
    if (xcb_connection_has_error(server.get()) != 0)
        server.reset();
    return server;
}
