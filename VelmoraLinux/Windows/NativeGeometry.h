#pragma once

#include <QPoint>
#include <QRect>

// Converts the X server's pixels to the device-independent points of Qt and the application.

[[nodiscard]] QPoint toPoints(QPoint native);
[[nodiscard]] QRect toPoints(const QRect &native);
