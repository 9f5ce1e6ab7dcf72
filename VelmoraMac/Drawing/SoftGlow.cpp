#include "SoftGlow.h"

#include "SoftPictures.h"

#include <QPainter>

#include <algorithm>

SoftGlow::SoftGlow(QQuickItem *parent)
    : QQuickPaintedItem(parent)
{
}

void SoftGlow::setColor(const QColor &color)
{
    if (color == color_)
        return;
    color_ = color;
    update();
    Q_EMIT colorChanged();
}

void SoftGlow::paint(QPainter *painter)
{
    const double ratio = painter->device()->devicePixelRatioF();
    const int side = qRound(std::min(width(), height()) * ratio);
    if (side > 0)
        painter->drawImage(boundingRect(), SoftPictures::glow(side, color_));
}
