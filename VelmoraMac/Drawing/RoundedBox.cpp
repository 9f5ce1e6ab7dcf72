#include "RoundedBox.h"

#include "PixelGrid.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

RoundedBox::RoundedBox(QQuickItem *parent)
    : DrawnItem(parent)
{
    connect(this, &RoundedBox::changed, this, [this] {
        corners_ = {};
        update();
    });
}

void RoundedBox::draw(QPainter &painter)
{
    const QRectF box = aligned_ ? PixelGrid::aligned(painter, boundingRect()) : boundingRect();
    const double radius = std::min({radius_, box.width() / 2, box.height() / 2});
    const double line = PixelGrid::lineWidth(painter, borderWidth_);
    const double scale = PixelGrid::scale(painter);
    const double needed = 2 * std::ceil(radius * scale);
    const bool holdsCorners = std::min(box.width(), box.height()) * scale >= needed - 0.01;
    if (aligned_ && holdsCorners && !endColor_.isValid() && PixelGrid::isUpright(painter))
        drawPixels(painter, painter.deviceTransform().mapRect(box).toRect(), radius * scale,
                   qRound(line * scale));
    else
        drawShape(painter, box, radius, line);
}

void RoundedBox::drawShape(QPainter &painter, const QRectF &box, double radius, double line) const
{
    painter.setPen(Qt::NoPen);
    if (endColor_.isValid()) {
        QLinearGradient gradient(box.topLeft(), box.topRight());
        gradient.setColorAt(0, color_);
        gradient.setColorAt(1, endColor_);
        painter.setBrush(gradient);
    } else {
        painter.setBrush(color_);
    }
    if (endColor_.isValid() || color_.alpha() > 0)
        painter.drawRoundedRect(box, radius, radius);
    if (borderColor_.alpha() == 0 || line <= 0)
        return;
    const double inner = std::max(0.0, radius - line);
    QPainterPath ring;
    ring.addRoundedRect(box, radius, radius);
    ring.addRoundedRect(box.adjusted(line, line, -line, -line), inner, inner);
    painter.fillPath(ring, borderColor_);
}

void RoundedBox::drawPixels(QPainter &painter, const QRect &box, double radius, int line)
{
    const int side = qCeil(radius);
    if (corners_.width() != 2 * side || cornersRadius_ != radius) {
        cornersRadius_ = radius;
        corners_ = QImage(2 * side, 2 * side, QImage::Format_ARGB32_Premultiplied);
        corners_.fill(Qt::transparent);
        if (side > 0) {
            QPainter pen(&corners_);
            pen.setRenderHint(QPainter::Antialiasing);
            drawShape(pen, corners_.rect(), radius, line);
        }
    }
    painter.save();
    PixelGrid::countPixels(painter);
    painter.setRenderHint(QPainter::Antialiasing, false);
    const QRect inside = box.adjusted(side, side, -side, -side);
    for (const int right : {0, 1})
        for (const int below : {0, 1})
            painter.drawImage(QPoint(right != 0 ? inside.right() + 1 : box.left(),
                                     below != 0 ? inside.bottom() + 1 : box.top()),
                              corners_, QRect(right * side, below * side, side, side));
    if (color_.alpha() > 0) {
        PixelGrid::fillPixels(painter, QRect(inside.left(), box.top(), inside.width(), side), color_);
        PixelGrid::fillPixels(painter, QRect(box.left(), inside.top(), box.width(), inside.height()), color_);
        PixelGrid::fillPixels(painter, QRect(inside.left(), inside.bottom() + 1, inside.width(), side),
                              color_);
    }
    if (borderColor_.alpha() > 0) {
        PixelGrid::fillPixels(painter, QRect(inside.left(), box.top(), inside.width(), line), borderColor_);
        PixelGrid::fillPixels(painter, QRect(inside.left(), box.bottom() + 1 - line, inside.width(), line),
                              borderColor_);
        const int start = side > 0 ? inside.top() : box.top() + line;
        const int length = side > 0 ? inside.height() : box.height() - 2 * line;
        PixelGrid::fillPixels(painter, QRect(box.left(), start, line, length), borderColor_);
        PixelGrid::fillPixels(painter, QRect(box.right() + 1 - line, start, line, length), borderColor_);
    }
    painter.restore();
}
