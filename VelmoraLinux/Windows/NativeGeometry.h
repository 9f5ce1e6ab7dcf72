#pragma once

#include <QPoint>
#include <QRect>

// Between the X server's pixels and the points that Qt and the application count in.

[[nodiscard]] QPoint toPoints(QPoint native);
[[nodiscard]] QRect toPoints(const QRect &native);
