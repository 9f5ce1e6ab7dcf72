#pragma once

#include <VelmoraLinux/X11/X11Display.h>

#include <QImage>
#include <QObject>
#include <QRect>

#include <functional>
#include <optional>

// The icon in a system tray of the System Tray Protocol Specification (freedesktop.org): a small window of
// ours that is embedded in the panel's window by XEmbed.
//
// While shown it docks into the system tray, also into one that starts later.
class XEmbedIcon : public QObject {
    Q_OBJECT

public:
    // Draws the icon in a square of `pixels` x `pixels`, for a panel of the colour `ground` if that is known.
    using Painter = std::function<QImage(int pixels, const std::optional<QColor> &ground)>;

    // `connection` may be null: there is no system tray then.
    XEmbedIcon(X11Display *connection, QString title, Painter painter);
    ~XEmbedIcon() override;

    void setShown(bool shown);

    // Whether a tray has been given the icon.
    [[nodiscard]] bool isDocked() const { return window_ != XCB_WINDOW_NONE; }

    void repaint();
    void setToolTip(const QString &text);

    // In the X server's pixels; nothing while the icon is not docked.
    [[nodiscard]] std::optional<QRect> nativeGeometry() const;

    Q_SIGNAL void activated();
    Q_SIGNAL void menuRequested();
    Q_SIGNAL void pointerEntered();
    Q_SIGNAL void pointerLeft();

private:
    void dock();
    void undock();
    void createWindow(xcb_window_t tray);
    void describeWindow();
    void handle(const xcb_generic_event_t &event);
    void handlePointer(const xcb_generic_event_t &event);
    void handleRelease(const xcb_button_release_event_t &release);
    [[nodiscard]] std::optional<QColor> ground(const QImage &background) const;
    [[nodiscard]] QImage picture(xcb_window_t window, QRect area) const;
    [[nodiscard]] QImage background(quint16 width, quint16 height) const;
    [[nodiscard]] quint8 depthOf(xcb_visualid_t visual) const;

    X11Display *connection_;
    QString title_;
    Painter painter_;
    bool shown_ = false;
    xcb_atom_t traySelection_ = XCB_ATOM_NONE;
    xcb_atom_t managerMessage_ = XCB_ATOM_NONE;
    xcb_window_t trayWindow_ = XCB_WINDOW_NONE;
    xcb_window_t window_ = XCB_WINDOW_NONE;
    xcb_colormap_t colormap_ = XCB_NONE;
    quint8 depth_ = 0;
    quint8 pressedButton_ = 0;
    QSize size_;
};
