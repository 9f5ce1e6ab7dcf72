#include "SoftGlow.h"

#include "PixelGrid.h"
#include "SoftPictures.h"

#include <QPainter>
#include <QQuickWindow>

#include <algorithm>

SoftGlow::SoftGlow(QQuickItem *parent)
    : DrawnItem(parent)
{
}

void SoftGlow::setColor(const QColor &color)
{
    if (color == color_)
        return;
    color_ = color;
    picture_ = {};
    update();
    Q_EMIT colorChanged();
}

void SoftGlow::draw(QPainter &painter)
{
    const int side = qRound(std::min(width(), height()) * window()->effectiveDevicePixelRatio());
    if (side <= 0)
        return;
    if (picture_.width() != side)
        picture_ = SoftPictures::glow(side, color_);
    const QRectF place = painter.deviceTransform().mapRect(boundingRect());
    if (PixelGrid::isUpright(painter) && qRound(place.width()) == side && qRound(place.height()) == side)
        PixelGrid::drawPixels(painter, place.topLeft().toPoint(), picture_);
    else
        painter.drawImage(boundingRect(), picture_);
}
