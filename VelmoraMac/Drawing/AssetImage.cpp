#include "AssetImage.h"

#include <VelmoraMac/StyleKit/AppAssets.h>

#include <QPainter>

#include <algorithm>

AssetImage::AssetImage(QQuickItem *parent)
    : QQuickPaintedItem(parent)
{
}

void AssetImage::setName(const QString &name)
{
    if (name == name_)
        return;
    name_ = name;
    update();
    Q_EMIT nameChanged();
}

void AssetImage::paint(QPainter *painter)
{
    const double ratio = painter->device()->devicePixelRatioF();
    const double side = std::min(width(), height());
    const QImage image = AppAssets::image(name_, qRound(side * ratio)).image;
    painter->drawImage(QRectF((width() - side) / 2, (height() - side) / 2, side, side), image);
}
