#include "XEmbedIcon.h"

#include <QPainter>

#include <array>
#include <utility>

namespace {
constexpr quint32 requestDock = 0;
constexpr quint32 mappedFlag = 1;
constexpr quint16 preferredSize = 22;
constexpr quint32 minimumSizeFlag = 1U << 4U;
} // namespace

XEmbedIcon::XEmbedIcon(X11Display *connection, QString title, Painter painter)
    : connection_(connection)
    , title_(std::move(title))
    , painter_(std::move(painter))
{
    if (connection_ == nullptr)
        return;
    const QByteArray selection = "_NET_SYSTEM_TRAY_S" + QByteArray::number(connection_->screenNumber());
    traySelection_ = connection_->atom(selection.constData());
    managerMessage_ = connection_->atom("MANAGER");
    connection_->addEventHandler([this](const xcb_generic_event_t &event) { handle(event); });
}

XEmbedIcon::~XEmbedIcon()
{
    undock();
}

void XEmbedIcon::setShown(bool shown)
{
    if (connection_ == nullptr || shown == shown_)
        return;
    shown_ = shown;
    if (shown_) {
        // A new tray announces itself by a MANAGER message to the root window.
        connection_->listenTo(connection_->root(), XCB_EVENT_MASK_STRUCTURE_NOTIFY);
        dock();
    } else {
        undock();
    }
}

void XEmbedIcon::dock()
{
    undock();
    const xcb_window_t tray = connection_->selectionOwner(traySelection_);
    if (tray == XCB_WINDOW_NONE)
        return;
    trayWindow_ = tray;
    connection_->listenTo(trayWindow_, XCB_EVENT_MASK_STRUCTURE_NOTIFY);
    createWindow(trayWindow_);

    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = trayWindow_;
    message.type = connection_->atom("_NET_SYSTEM_TRAY_OPCODE");
    message.data.data32[0] = XCB_CURRENT_TIME;
    message.data.data32[1] = requestDock;
    message.data.data32[2] = window_;
    connection_->sendClientMessage(trayWindow_, XCB_EVENT_MASK_NO_EVENT, message);
}

void XEmbedIcon::undock()
{
    if (window_ == XCB_WINDOW_NONE)
        return;
    xcb_destroy_window(connection_->xcb(), window_);
    if (colormap_ != XCB_NONE)
        xcb_free_colormap(connection_->xcb(), colormap_);
    connection_->flush();
    window_ = XCB_WINDOW_NONE;
    colormap_ = XCB_NONE;
    trayWindow_ = XCB_WINDOW_NONE;
    size_ = {};
}

quint8 XEmbedIcon::depthOf(xcb_visualid_t visual) const
{
    for (auto depths = xcb_screen_allowed_depths_iterator(&connection_->screen()); depths.rem != 0;
         xcb_depth_next(&depths)) {
        for (auto visuals = xcb_depth_visuals_iterator(depths.data); visuals.rem != 0;
             xcb_visualtype_next(&visuals)) {
            if (visuals.data->visual_id == visual)
                return depths.data->depth;
        }
    }
    return 0;
}

void XEmbedIcon::createWindow(xcb_window_t tray)
{
    xcb_connection_t *xcb = connection_->xcb();
    const auto wished = connection_->property(tray, connection_->atom("_NET_SYSTEM_TRAY_VISUAL"), 1);
    const bool translucent = !wished.empty() && depthOf(wished.front()) == 32;
    const xcb_visualid_t visual = translucent ? wished.front() : connection_->screen().root_visual;
    depth_ = translucent ? quint8{32} : connection_->screen().root_depth;

    colormap_ = xcb_generate_id(xcb);
    xcb_create_colormap(xcb, XCB_COLORMAP_ALLOC_NONE, colormap_, connection_->root(), visual);
    constexpr quint32 events = XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_STRUCTURE_NOTIFY |
                               XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE |
                               XCB_EVENT_MASK_ENTER_WINDOW | XCB_EVENT_MASK_LEAVE_WINDOW;
    window_ = xcb_generate_id(xcb);
    if (translucent) {
        const std::array<quint32, 4> values{0, 0, events, colormap_};
        xcb_create_window(xcb, depth_, window_, connection_->root(), -1, -1, preferredSize, preferredSize, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, visual,
                          XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_EVENT_MASK | XCB_CW_COLORMAP,
                          values.data());
    } else {
        const std::array<quint32, 2> values{XCB_BACK_PIXMAP_PARENT_RELATIVE, events};
        xcb_create_window(xcb, depth_, window_, connection_->root(), -1, -1, preferredSize, preferredSize, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, visual, XCB_CW_BACK_PIXMAP | XCB_CW_EVENT_MASK,
                          values.data());
    }
    describeWindow();
}

void XEmbedIcon::describeWindow()
{
    xcb_connection_t *xcb = connection_->xcb();
    const std::array<quint32, 2> info{0, mappedFlag};
    const xcb_atom_t infoAtom = connection_->atom("_XEMBED_INFO");
    xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, window_, infoAtom, infoAtom, 32, info.size(),
                        info.data());
    // Some trays give an icon exactly its minimum size.
    std::array<quint32, 18> sizeHints{};
    sizeHints[0] = minimumSizeFlag;
    sizeHints[5] = sizeHints[6] = preferredSize;
    xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, window_, XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS,
                        32, sizeHints.size(), sizeHints.data());
    const QByteArray windowClass = title_.toLower().toUtf8() + '\0' + title_.toUtf8() + '\0';
    xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, window_, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8,
                        static_cast<quint32>(windowClass.size()), windowClass.constData());
    setToolTip(title_);
}

void XEmbedIcon::setToolTip(const QString &text)
{
    if (window_ == XCB_WINDOW_NONE)
        return;
    // Panels and screen readers use the window's name as the icon's description.
    const QByteArray name = text.toUtf8();
    xcb_change_property(connection_->xcb(), XCB_PROP_MODE_REPLACE, window_, connection_->atom("_NET_WM_NAME"),
                        connection_->atom("UTF8_STRING"), 8, static_cast<quint32>(name.size()),
                        name.constData());
    connection_->flush();
}

void XEmbedIcon::handle(const xcb_generic_event_t &event)
{
    if (!shown_)
        return;
    switch (event.response_type & 0x7fU) {
    case XCB_CLIENT_MESSAGE: {
        const auto &message = reinterpret_cast<const xcb_client_message_event_t &>(event);
        if (message.type == managerMessage_ && message.data.data32[1] == traySelection_)
            dock();
        break;
    }
    case XCB_DESTROY_NOTIFY:
        if (reinterpret_cast<const xcb_destroy_notify_event_t &>(event).window == trayWindow_)
            dock(); // Another tray may have started already.
        break;
    case XCB_CONFIGURE_NOTIFY: {
        const auto &configured = reinterpret_cast<const xcb_configure_notify_event_t &>(event);
        if (configured.window == window_ && size_ != QSize(configured.width, configured.height)) {
            size_ = {configured.width, configured.height};
            repaint();
        }
        break;
    }
    case XCB_EXPOSE:
        if (reinterpret_cast<const xcb_expose_event_t &>(event).window == window_)
            repaint();
        break;
    default:
        handlePointer(event);
    }
}

void XEmbedIcon::handlePointer(const xcb_generic_event_t &event)
{
    switch (event.response_type & 0x7fU) {
    case XCB_ENTER_NOTIFY:
        if (reinterpret_cast<const xcb_enter_notify_event_t &>(event).event == window_)
            Q_EMIT pointerEntered();
        break;
    case XCB_LEAVE_NOTIFY:
        if (reinterpret_cast<const xcb_leave_notify_event_t &>(event).event == window_)
            Q_EMIT pointerLeft();
        break;
    case XCB_BUTTON_PRESS: {
        const auto &press = reinterpret_cast<const xcb_button_press_event_t &>(event);
        if (press.event != window_)
            break;
        pressedButton_ = press.detail;
        Q_EMIT pointerLeft();
        break;
    }
    case XCB_BUTTON_RELEASE:
        handleRelease(reinterpret_cast<const xcb_button_release_event_t &>(event));
        break;
    default:
        break;
    }
}

void XEmbedIcon::handleRelease(const xcb_button_release_event_t &release)
{
    // The press that closes a menu goes to the menu, only its release comes here.
    const bool wasPressedHere = std::exchange(pressedButton_, 0) == release.detail;
    if (!wasPressedHere || release.event != window_ ||
        !QRect(QPoint(), size_).contains(release.event_x, release.event_y))
        return;
    if (release.detail == XCB_BUTTON_INDEX_1)
        Q_EMIT activated();
    else if (release.detail == XCB_BUTTON_INDEX_3)
        Q_EMIT menuRequested();
}

// What the server shows there; null when it is not to be had.
QImage XEmbedIcon::picture(xcb_window_t window, QRect area) const
{
    const auto width = static_cast<quint16>(area.width());
    const auto height = static_cast<quint16>(area.height());
    const auto cookie =
        xcb_get_image(connection_->xcb(), XCB_IMAGE_FORMAT_Z_PIXMAP, window, static_cast<qint16>(area.x()),
                      static_cast<qint16>(area.y()), width, height, ~0U);
    const XcbReply<xcb_get_image_reply_t> reply(xcb_get_image_reply(connection_->xcb(), cookie, nullptr));
    if (!reply || xcb_get_image_data_length(reply.get()) != 4 * width * height)
        return {};
    const auto format = reply->depth == 32 ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32;
    return QImage(xcb_get_image_data(reply.get()), width, height, format)
        .convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

QImage XEmbedIcon::background(quint16 width, quint16 height) const
{
    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    if (depth_ == 32)
        return image;
    // Without an alpha channel the icon is painted on the panel's background, which the cleared window shows.
    xcb_clear_area(connection_->xcb(), 0, window_, 0, 0, 0, 0);
    const QImage shown = picture(window_, QRect(0, 0, width, height));
    return shown.isNull() ? image : shown;
}

// The colour of the panel under the icon, from `background` or, when that is transparent, from the tray's window.
std::optional<QColor> XEmbedIcon::ground(const QImage &background) const
{
    QImage shown = background;
    if (depth_ == 32) {
        const auto cookie = xcb_get_geometry(connection_->xcb(), trayWindow_);
        const XcbReply<xcb_get_geometry_reply_t> tray(
            xcb_get_geometry_reply(connection_->xcb(), cookie, nullptr));
        shown = tray ? picture(trayWindow_, QRect(0, 0, tray->width, tray->height)) : QImage();
    }
    if (shown.isNull())
        return {};
    const QColor mean = shown.scaled(1, 1, Qt::IgnoreAspectRatio, Qt::SmoothTransformation).pixelColor(0, 0);
    return mean.alphaF() > 0.5F ? std::optional(mean) : std::nullopt;
}

void XEmbedIcon::repaint()
{
    if (window_ == XCB_WINDOW_NONE || size_.isEmpty())
        return;
    const auto width = static_cast<quint16>(size_.width());
    const auto height = static_cast<quint16>(size_.height());
    QImage image = background(width, height);
    const int side = qMin(width, height);
    QPainter painter(&image);
    painter.drawImage((width - side) / 2, (height - side) / 2, painter_(side, ground(image)));
    painter.end();

    xcb_connection_t *xcb = connection_->xcb();
    const xcb_gcontext_t gc = xcb_generate_id(xcb);
    xcb_create_gc(xcb, gc, window_, 0, nullptr);
    xcb_put_image(xcb, XCB_IMAGE_FORMAT_Z_PIXMAP, window_, gc, width, height, 0, 0, 0, depth_,
                  static_cast<quint32>(image.sizeInBytes()), image.constBits());
    xcb_free_gc(xcb, gc);
    connection_->flush();
}

std::optional<QRect> XEmbedIcon::nativeGeometry() const
{
    if (window_ == XCB_WINDOW_NONE || size_.isEmpty())
        return {};
    const auto cookie = xcb_translate_coordinates(connection_->xcb(), window_, connection_->root(), 0, 0);
    const XcbReply<xcb_translate_coordinates_reply_t> reply(
        xcb_translate_coordinates_reply(connection_->xcb(), cookie, nullptr));
    if (!reply)
        return {};
    return QRect(QPoint(reply->dst_x, reply->dst_y), size_);
}
