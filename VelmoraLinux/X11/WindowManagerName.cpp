#include "WindowManagerName.h"

#include "XcbServer.h"

#include <cstring>
#include <string_view>

namespace {

constexpr std::uint32_t mostWords = 64;

std::string property(xcb_connection_t *server, xcb_window_t window, std::string_view name)
{
    const auto question = xcb_intern_atom(server, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const XcbReply<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(server, question, nullptr));
    if (!atom)
        return {};
    const auto cookie = xcb_get_property(server, 0, window, atom->atom, XCB_ATOM_ANY, 0, mostWords);
    const XcbReply<xcb_get_property_reply_t> value(xcb_get_property_reply(server, cookie, nullptr));
    if (!value)
        return {};
    return {static_cast<const char *>(xcb_get_property_value(value.get())),
            static_cast<std::size_t>(xcb_get_property_value_length(value.get()))};
}

} // namespace

std::string windowManagerName(xcb_connection_t *server)
{
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(server)).data->root;
    const std::string check = property(server, root, "_NET_SUPPORTING_WM_CHECK");
    xcb_window_t window = XCB_NONE;
    if (check.size() != sizeof window)
        return {};
    std::memcpy(&window, check.data(), sizeof window);
    return property(server, window, "_NET_WM_NAME");
}
