#include "X11WindowManager.h"

#include <QPainterPath>
#include <QRegion>
#include <QSurfaceFormat>
#include <QVariant>
#include <QWindow>

#include <xcb/xfixes.h>

#include <utility>

namespace {
constexpr auto cornerRadiusProperty = "velmoraCornerRadius";
constexpr quint32 sourceIsThePager = 2; // Window managers follow requests made for the user without doubt.

// Without those that a tooltip has anyway Qt makes the native window twice, and what was asked of the first,
// such as letting clicks through, is lost.
constexpr Qt::WindowFlags panelHints = Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                                       Qt::X11BypassWindowManagerHint | Qt::NoDropShadowWindowHint;

QRegion roundedRegion(QSize size, int radius)
{
    QPainterPath path;
    path.addRoundedRect(QRectF(QPointF(), size), radius, radius);
    return {path.toFillPolygon().toPolygon()};
}

quint32 windowId(const QWindow &window)
{
    return static_cast<quint32>(window.winId());
}
} // namespace

X11WindowManager::X11WindowManager(X11Display *connection, ActivationToken &token)
    : connection_(connection)
    , token_(token)
{
    if (connection_ != nullptr)
        watchCompositor();
}

void X11WindowManager::watchCompositor()
{
    // The compositor owns this selection.
    const QByteArray name = "_NET_WM_CM_S" + QByteArray::number(connection_->screenNumber());
    const xcb_atom_t selection = connection_->atom(name.constData());
    const xcb_query_extension_reply_t *xfixes = xcb_get_extension_data(connection_->xcb(), &xcb_xfixes_id);
    if (xfixes != nullptr && xfixes->present != 0) {
        xcb_discard_reply(connection_->xcb(), xcb_xfixes_query_version(connection_->xcb(), 1, 0).sequence);
        xcb_xfixes_select_selection_input(connection_->xcb(), connection_->root(), selection,
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                              XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                              XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
        const auto notification = static_cast<unsigned>(xfixes->first_event) + XCB_XFIXES_SELECTION_NOTIFY;
        connection_->addEventHandler([this, selection, notification](const xcb_generic_event_t &event) {
            if ((event.response_type & 0x7fU) != notification)
                return;
            const auto &change = reinterpret_cast<const xcb_xfixes_selection_notify_event_t &>(event);
            if (change.selection == selection)
                setBlendsWindows(change.owner != XCB_WINDOW_NONE);
        });
    }
    blendsWindows_ = connection_->selectionOwner(selection) != XCB_WINDOW_NONE;
    connection_->flush();
}

void X11WindowManager::setBlendsWindows(bool blends)
{
    if (std::exchange(blendsWindows_, blends) != blends && blendingChanged_)
        blendingChanged_();
}

void X11WindowManager::makePanel(QWindow &window, const PanelTraits &traits)
{
    // Compositors of Wayland give no tooltip the keyboard.
    window.setFlags((traits.takesKeyboard ? Qt::Window : Qt::ToolTip) | panelHints);
    window.setFlag(Qt::WindowTransparentForInput, !traits.acceptsMouse);
    QSurfaceFormat format = window.requestedFormat();
    format.setAlphaBufferSize(8);
    window.setFormat(format);
    window.setProperty(cornerRadiusProperty, traits.cornerRadius);
}

void X11WindowManager::giveKeyboard(QWindow &panel)
{
    if (connection_ == nullptr) {
        panel.requestActivate();
        return;
    }
    if (const xcb_window_t owner = keyboardOwner(); owner != windowId(panel))
        earlierKeyboardOwner_ = owner;
    setKeyboardOwner(windowId(panel));
}

void X11WindowManager::returnKeyboard(QWindow &panel)
{
    if (connection_ != nullptr && keyboardOwner() == windowId(panel))
        setKeyboardOwner(earlierKeyboardOwner_);
}

xcb_window_t X11WindowManager::keyboardOwner() const
{
    const XcbReply<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(connection_->xcb(), xcb_get_input_focus(connection_->xcb()), nullptr));
    return reply ? reply->focus : xcb_window_t{XCB_INPUT_FOCUS_POINTER_ROOT};
}

void X11WindowManager::setKeyboardOwner(xcb_window_t window)
{
    // Not by Qt, which asks with the time of the last event that it has seen: others may be newer. A window that is
    // gone by now is an error of the server's, which is overlooked.
    xcb_set_input_focus(connection_->xcb(), XCB_INPUT_FOCUS_POINTER_ROOT, window, XCB_CURRENT_TIME);
    connection_->flush();
}

void X11WindowManager::place(QWindow &panel, const QRect &frame)
{
    // First the shape: what the window gains is seen only when it belongs to the shape.
    const int cornerRadius = panel.property(cornerRadiusProperty).toInt();
    const QRegion shape = blendsWindows_ ? QRegion() : roundedRegion(frame.size(), cornerRadius);
    if (panel.mask() != shape)
        panel.setMask(shape);
    panel.setGeometry(frame);
}

void X11WindowManager::activate(QWindow &window)
{
    window.raise();
    window.requestActivate();
    if (connection_ == nullptr)
        return;
    useToken(window);
    const auto desktop =
        connection_->property(connection_->root(), connection_->atom("_NET_CURRENT_DESKTOP"), 1);
    if (!desktop.empty())
        tellWindowManager(window, "_NET_WM_DESKTOP", desktop.front(), sourceIsThePager);
    tellWindowManager(window, "_NET_ACTIVE_WINDOW", sourceIsThePager);
}

void X11WindowManager::tellWindowManager(const QWindow &window, const char *message, quint32 first,
                                         quint32 second)
{
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = windowId(window);
    event.type = connection_->atom(message);
    event.data.data32[0] = first;
    event.data.data32[1] = second;
    connection_->sendClientMessage(connection_->root(),
                                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                                   event);
}

void X11WindowManager::useToken(const QWindow &window)
{
    const QByteArray token = token_.take();
    if (token.isEmpty())
        return;
    xcb_change_property(connection_->xcb(), XCB_PROP_MODE_REPLACE, windowId(window),
                        connection_->atom("_NET_STARTUP_ID"), connection_->atom("UTF8_STRING"), 8,
                        static_cast<quint32>(token.size()), token.constData());
}
