#pragma once

#include <xcb/xcb.h>

#include <string>

// How the window manager of an X server calls itself, as the freedesktop hints tell; empty when there is
// none. Waits for the server.
[[nodiscard]] std::string windowManagerName(xcb_connection_t *server);
