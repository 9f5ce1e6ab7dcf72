#include "X11Display.h"

#include <QSocketNotifier>

#include <cstring>
#include <utility>

std::unique_ptr<X11Display> X11Display::open()
{
    int screenNumber = 0;
    XcbServer connection = connectToXServer(nullptr, &screenNumber);
    if (!connection)
        return nullptr;
    return std::unique_ptr<X11Display>(new X11Display(std::move(connection), screenNumber));
}

X11Display::X11Display(XcbServer connection, int screenNumber)
    : connection_(std::move(connection))
    , screenNumber_(screenNumber)
{
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(xcb()));
    for (int i = 0; i < screenNumber; ++i)
        xcb_screen_next(&screens);
    screen_ = screens.data;

    auto *notifier = new QSocketNotifier(xcb_get_file_descriptor(xcb()), QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this, notifier] {
        dispatch();
        if (xcb_connection_has_error(xcb()) == 0)
            return;
        notifier->setEnabled(false); // A lost server would keep the socket readable for ever.
        if (lost_)
            lost_();
    });
}

xcb_atom_t X11Display::atom(const char *name) const
{
    const auto cookie = xcb_intern_atom(xcb(), 0, static_cast<quint16>(std::strlen(name)), name);
    const XcbReply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(xcb(), cookie, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

xcb_window_t X11Display::selectionOwner(xcb_atom_t selection) const
{
    const auto cookie = xcb_get_selection_owner(xcb(), selection);
    const XcbReply<xcb_get_selection_owner_reply_t> reply(
        xcb_get_selection_owner_reply(xcb(), cookie, nullptr));
    return reply ? reply->owner : xcb_window_t{XCB_WINDOW_NONE};
}

std::vector<quint32> X11Display::property(xcb_window_t window, xcb_atom_t name, quint32 length) const
{
    return propertyOf({window}, name, length).front();
}

std::vector<std::vector<quint32>> X11Display::propertyOf(const std::vector<xcb_window_t> &windows,
                                                         xcb_atom_t name, quint32 length) const
{
    std::vector<xcb_get_property_cookie_t> cookies;
    cookies.reserve(windows.size());
    for (const xcb_window_t window : windows)
        cookies.push_back(xcb_get_property(xcb(), 0, window, name, XCB_ATOM_ANY, 0, length));
    std::vector<std::vector<quint32>> values;
    values.reserve(windows.size());
    for (const xcb_get_property_cookie_t cookie : cookies) {
        const XcbReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(xcb(), cookie, nullptr));
        values.emplace_back();
        if (!reply || reply->format != 32)
            continue;
        const auto *words = static_cast<const quint32 *>(xcb_get_property_value(reply.get()));
        values.back().assign(words, words + reply->value_len);
    }
    return values;
}

void X11Display::sendClientMessage(xcb_window_t destination, quint32 eventMask,
                                   const xcb_client_message_event_t &message)
{
    xcb_send_event(xcb(), 0, destination, eventMask, reinterpret_cast<const char *>(&message));
    flush();
}

void X11Display::listenTo(xcb_window_t window, quint32 eventMask) const
{
    const auto cookie = xcb_get_window_attributes(xcb(), window);
    const XcbReply<xcb_get_window_attributes_reply_t> reply(
        xcb_get_window_attributes_reply(xcb(), cookie, nullptr));
    const quint32 mask = eventMask | (reply ? reply->your_event_mask : 0);
    xcb_change_window_attributes(xcb(), window, XCB_CW_EVENT_MASK, &mask);
}

void X11Display::flush()
{
    xcb_flush(xcb());
    // Waiting for a reply may have read events into xcb's queue, where the socket no longer announces them.
    QMetaObject::invokeMethod(this, &X11Display::dispatch, Qt::QueuedConnection);
}

void X11Display::dispatch()
{
    while (const XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(xcb())}) {
        for (const EventHandler &handler : handlers_)
            handler(*event);
    }
    xcb_flush(xcb());
}
