#include "QtScreens.h"

#include <QGuiApplication>
#include <QScreen>

QRect QtScreens::mainWorkArea() const
{
    const QScreen *screen = QGuiApplication::primaryScreen();
    return screen == nullptr ? QRect() : screen->availableGeometry();
}

QRect QtScreens::workAreaAt(QPoint point) const
{
    const QScreen *screen = QGuiApplication::screenAt(point);
    return screen == nullptr ? mainWorkArea() : screen->availableGeometry();
}
