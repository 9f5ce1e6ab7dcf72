#pragma once

#include <QPoint>
#include <QRect>

class QScreen;

// Converts the X server's pixels to the device-independent points of Qt and the application.

// The frame of `screen` in the server's pixels.
[[nodiscard]] QRect nativeGeometry(const QScreen &screen);

[[nodiscard]] QPoint toPoints(QPoint native);
[[nodiscard]] QRect toPoints(const QRect &native);
