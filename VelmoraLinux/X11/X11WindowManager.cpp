#include "X11WindowManager.h"

#include <QPainterPath>
#include <QRegion>
#include <QSurfaceFormat>
#include <QVariant>
#include <QWindow>

namespace {
constexpr auto cornerRadiusProperty = "velmoraCornerRadius";
constexpr quint32 sourceIsThePager = 2; // Window managers follow requests made for the user without doubt.

// Without those that a tooltip has anyway Qt makes the native window twice, and what was asked of the first,
// such as letting clicks through, is lost.
constexpr Qt::WindowFlags panelFlags = Qt::ToolTip | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
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
}

void X11WindowManager::makePanel(QWindow &window, const PanelTraits &traits)
{
    window.setFlags(panelFlags);
    window.setFlag(Qt::WindowTransparentForInput, !traits.acceptsMouse);
    QSurfaceFormat format = window.requestedFormat();
    format.setAlphaBufferSize(8);
    window.setFormat(format);
    if (!blendsWindows())
        window.setProperty(cornerRadiusProperty, traits.cornerRadius);
}

void X11WindowManager::place(QWindow &panel, const QRect &frame)
{
    panel.setGeometry(frame);
    const QVariant cornerRadius = panel.property(cornerRadiusProperty);
    if (cornerRadius.isValid())
        panel.setMask(roundedRegion(frame.size(), cornerRadius.toInt()));
}

bool X11WindowManager::blendsWindows() const
{
    if (connection_ == nullptr)
        return true;
    const QByteArray selection = "_NET_WM_CM_S" + QByteArray::number(connection_->screenNumber());
    return connection_->selectionOwner(connection_->atom(selection.constData())) != XCB_WINDOW_NONE;
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
