#include "X11PointerMonitor.h"

#include <VelmoraLinux/Windows/NativeGeometry.h>

#include <xcb/xinput.h>

X11PointerMonitor::X11PointerMonitor(X11Display *connection)
    : connection_(connection)
{
    if (connection_ == nullptr)
        return;
    const xcb_query_extension_reply_t *extension = xcb_get_extension_data(connection_->xcb(), &xcb_input_id);
    if (extension == nullptr || extension->present == 0) {
        connection_ = nullptr;
        return;
    }
    extensionOpcode_ = extension->major_opcode;
    // Raw events come while another program holds a grab only to clients that speak 2.1 or newer.
    const auto cookie = xcb_input_xi_query_version(connection_->xcb(), 2, 2);
    const XcbReply<xcb_input_xi_query_version_reply_t> version(
        xcb_input_xi_query_version_reply(connection_->xcb(), cookie, nullptr));
    connection_->addEventHandler([this](const xcb_generic_event_t &event) { handle(event); });
}

void X11PointerMonitor::start(Handler handler)
{
    handler_ = std::move(handler);
    select(true);
}

void X11PointerMonitor::stop()
{
    if (handler_)
        select(false);
    handler_ = nullptr;
}

void X11PointerMonitor::select(bool listening)
{
    if (connection_ == nullptr)
        return;

    struct {
        xcb_input_event_mask_t head;
        quint32 mask;
    } const masks{{XCB_INPUT_DEVICE_ALL_MASTER, 1},
                  listening ? quint32{XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS} : 0U};

    xcb_input_xi_select_events(connection_->xcb(), connection_->root(), 1, &masks.head);
    connection_->flush();
}

void X11PointerMonitor::handle(const xcb_generic_event_t &event)
{
    if (!handler_ || (event.response_type & 0x7fU) != XCB_GE_GENERIC)
        return;
    const auto &generic = reinterpret_cast<const xcb_ge_generic_event_t &>(event);
    if (generic.extension != extensionOpcode_ || generic.event_type != XCB_INPUT_RAW_BUTTON_PRESS)
        return;
    const auto &press = reinterpret_cast<const xcb_input_raw_button_press_event_t &>(event);
    if (press.detail != XCB_BUTTON_INDEX_1 && press.detail != XCB_BUTTON_INDEX_3)
        return;
    const Handler handler = handler_; // It may stop the monitor.
    handler(pressUnderPointer());
}

PointerMonitor::Press X11PointerMonitor::pressUnderPointer() const
{
    const auto cookie = xcb_query_pointer(connection_->xcb(), connection_->root());
    const XcbReply<xcb_query_pointer_reply_t> pointer(
        xcb_query_pointer_reply(connection_->xcb(), cookie, nullptr));
    if (!pointer)
        return {};
    return {toPoints(QPoint(pointer->root_x, pointer->root_y)), pointer->child};
}
