#include "NativeGeometry.h"

#include <QGuiApplication>
#include <QScreen>

// Each screen keeps its native top left corner and has its size divided by its scale.
QRect nativeGeometry(const QScreen &screen)
{
    const QRect points = screen.geometry();
    return {points.topLeft(), (QSizeF(points.size()) * screen.devicePixelRatio()).toSize()};
}

namespace {
const QScreen *screenAtNative(QPoint native)
{
    const auto screens = QGuiApplication::screens();
    for (const QScreen *screen : screens) {
        if (nativeGeometry(*screen).contains(native))
            return screen;
    }
    return QGuiApplication::primaryScreen();
}
} // namespace

QPoint toPoints(QPoint native)
{
    const QScreen *screen = screenAtNative(native);
    if (screen == nullptr)
        return native;
    const QPoint origin = screen->geometry().topLeft();
    return origin + (QPointF(native - origin) / screen->devicePixelRatio()).toPoint();
}

QRect toPoints(const QRect &native)
{
    const QScreen *screen = screenAtNative(native.center());
    const double scale = screen == nullptr ? 1.0 : screen->devicePixelRatio();
    return {toPoints(native.topLeft()), (QSizeF(native.size()) / scale).toSize()};
}
