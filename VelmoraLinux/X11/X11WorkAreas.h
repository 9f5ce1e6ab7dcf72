#pragma once

#include "X11Display.h"

#include <VelmoraPlatform/Screens.h>

#include <QRectF>

#include <vector>

// The screens that Qt reports, with the work area of each monitor. What Qt knows is one area for all of them,
// so with several monitors it ignores the desktop's panels.
class X11WorkAreas : public Screens {
public:
    // `connection` may be null: there are no panels to see then.
    explicit X11WorkAreas(X11Display *connection);

    [[nodiscard]] QRect mainWorkArea() const override;
    [[nodiscard]] QRect workAreaAt(QPoint point) const override;

    // What panels leave of all monitors together, in fractions of their whole; everything where that is not known.
    [[nodiscard]] QRectF freePart() const;

private:
    [[nodiscard]] QSize desktopSize() const; // In pixels; empty when the server has gone.
    [[nodiscard]] QRect areaOf(const QRect &monitor) const;
    [[nodiscard]] std::vector<QRect> areasOfDesktop() const;
    [[nodiscard]] std::vector<std::vector<quint32>> struts() const;

    X11Display *connection_;
};

// The part of a desktop of the size `whole` that is `area`: x, y, width, height (_NET_WORKAREA, of each workspace).
[[nodiscard]] QRectF partOfDesktop(const std::vector<quint32> &area, QSize whole);

// The part of `monitor` that panels leave free, in the server's pixels. `areas`: those that the window manager
// tells for each monitor, if it does (_GTK_WORKAREAS). `struts`: what each panel takes of the edges of the
// whole desktop of the size `whole` (_NET_WM_STRUT_PARTIAL, 12 words).
[[nodiscard]] QRect workAreaOfMonitor(const QRect &monitor, QSize whole, const std::vector<QRect> &areas,
                                      const std::vector<std::vector<quint32>> &struts);
