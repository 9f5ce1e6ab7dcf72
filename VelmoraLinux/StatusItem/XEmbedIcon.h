#pragma once

#include <VelmoraLinux/X11/X11Display.h>

#include <QImage>
#include <QObject>
#include <QRect>

#include <functional>
#include <optional>

// The icon in an old-style notification area: a small window of ours inside the desktop panel's.
//
// While shown it waits for such an area and enters each one that appears.
class XEmbedIcon : public QObject {
    Q_OBJECT

public:
    // Makes the icon for a square of so many pixels.
    using Painter = std::function<QImage(int pixels)>;

    // `connection` may be null: there is no notification area then.
    XEmbedIcon(X11Display *connection, QString title, Painter painter);
    ~XEmbedIcon() override;

    void setShown(bool shown);
    void repaint();
    void setToolTip(const QString &text);

    // In the X server's pixels; nothing while the icon is in no notification area.
    [[nodiscard]] std::optional<QRect> nativeGeometry() const;

    Q_SIGNAL void activated();
    Q_SIGNAL void menuRequested();
    Q_SIGNAL void pointerEntered();
    Q_SIGNAL void pointerLeft();

private:
    void enterArea();
    void leaveArea();
    void createWindow(xcb_window_t area);
    void describeWindow();
    void handle(const xcb_generic_event_t &event);
    void handleRelease(const xcb_button_release_event_t &release);
    [[nodiscard]] QImage background(quint16 width, quint16 height) const;
    [[nodiscard]] quint8 depthOf(xcb_visualid_t visual) const;

    X11Display *connection_;
    QString title_;
    Painter painter_;
    bool shown_ = false;
    xcb_atom_t areaSelection_ = XCB_ATOM_NONE;
    xcb_atom_t managerMessage_ = XCB_ATOM_NONE;
    xcb_window_t area_ = XCB_WINDOW_NONE;
    xcb_window_t window_ = XCB_WINDOW_NONE;
    xcb_colormap_t colormap_ = XCB_NONE;
    quint8 depth_ = 0;
    QSize size_;
};
