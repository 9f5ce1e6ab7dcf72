#include "PlayedServer.h"

#include <cstring>

PlayedServer &playedServer()
{
    static PlayedServer server;
    return server;
}

// Length and format of a reply agree, whatever it says: the server sees to that.
void PlayedServer::answerProperty(const Property *property)
{
    if (propertyQuestions.empty())
        return;
    const auto handler = std::move(propertyQuestions.front());
    propertyQuestions.pop_front();
    if (property == nullptr)
        return handler(nullptr);
    xcb_get_property_reply_t head = {};
    head.type = property->type;
    head.format = property->type == XCB_NONE ? std::uint8_t(0) : property->format;
    const std::size_t values = head.format == 0 ? 0 : property->bytes.size() / (head.format / 8U);
    head.value_len = static_cast<std::uint32_t>(values);
    head.bytes_after = property->bytesAfter;
    std::vector<std::byte> reply(sizeof head + values * (head.format / 8U)); // Not one byte more.
    std::memcpy(reply.data(), &head, sizeof head);
    std::memcpy(reply.data() + sizeof head, property->bytes.data(), reply.size() - sizeof head);
    handler(reinterpret_cast<const xcb_get_property_reply_t *>(reply.data()));
}

void PlayedServer::answerNames(FuzzedDataProvider &given, const std::vector<std::string> &possible)
{
    if (nameQuestions.empty())
        return;
    const auto [count, handler] = std::move(nameQuestions.front());
    nameQuestions.pop_front();
    std::vector<std::string> names(count);
    for (std::string &name : names)
        name = possible.at(given.ConsumeIntegralInRange<std::size_t>(0, possible.size() - 1));
    handler(names);
}

std::unique_ptr<XcbConnection> XcbConnection::open(const QByteArray &)
{
    constexpr xcb_atom_t firstAtom = 100;
    std::unique_ptr<XcbConnection> connection(new XcbConnection(nullptr));
    for (std::size_t i = 0; i < connection->atoms_.size(); ++i)
        connection->atoms_.at(i) = firstAtom + static_cast<xcb_atom_t>(i);
    connection->largestChunk_ = PlayedServer::largestChunk;
    return connection;
}

XcbConnection::XcbConnection(XcbServer connection)
    : connection_(std::move(connection))
{
}

XcbConnection::~XcbConnection() = default;

xcb_window_t XcbConnection::makeWindow() const
{
    return 1;
}

void XcbConnection::destroyWindow(xcb_window_t) {}

void XcbConnection::readProperty(xcb_window_t, xcb_atom_t, bool, std::uint32_t, std::uint32_t,
                                 PropertyHandler handler)
{
    playedServer().propertyQuestions.push_back(std::move(handler));
}

void XcbConnection::askAtomNames(const std::vector<xcb_atom_t> &atoms, NamesHandler handler)
{
    playedServer().nameQuestions.emplace_back(atoms.size(), std::move(handler));
}

void XcbConnection::flush() {}

extern "C" {

xcb_void_cookie_t xcb_change_property(xcb_connection_t *, uint8_t, xcb_window_t window, xcb_atom_t property,
                                      xcb_atom_t type, uint8_t format, uint32_t length, const void *data)
{
    const std::string bytes(static_cast<const char *>(data), std::size_t(length) * (format / 8U));
    playedServer().written.push_back({{window, property}, {type, format, bytes, 0}});
    return {};
}

xcb_void_cookie_t xcb_send_event(xcb_connection_t *, uint8_t, xcb_window_t, uint32_t, const char *event)
{
    xcb_selection_notify_event_t notice = {};
    std::memcpy(&notice, event, sizeof notice);
    playedServer().notices.push_back(notice);
    return {};
}

xcb_void_cookie_t xcb_convert_selection(xcb_connection_t *, xcb_window_t, xcb_atom_t, xcb_atom_t target,
                                        xcb_atom_t, xcb_timestamp_t)
{
    playedServer().conversions.push_back(target);
    return {};
}

xcb_void_cookie_t xcb_change_window_attributes(xcb_connection_t *, xcb_window_t, uint32_t, const void *)
{
    return {};
}

const xcb_setup_t *xcb_get_setup(xcb_connection_t *)
{
    static const xcb_setup_t setup = [] {
        xcb_setup_t made = {};
        made.resource_id_mask = PlayedServer::windowMask;
        return made;
    }();
    return &setup;
}

} // extern "C"
