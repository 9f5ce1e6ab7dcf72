#include "AssetImage.h"

#include "PixelGrid.h"

#include <VelmoraMac/StyleKit/AppAssets.h>

#include <QPainter>

#include <algorithm>

AssetImage::AssetImage(QQuickItem *parent)
    : DrawnItem(parent)
{
}

void AssetImage::setName(const QString &name)
{
    if (name == name_)
        return;
    name_ = name;
    drawing_.forget();
    update();
    Q_EMIT nameChanged();
}

void AssetImage::draw(QPainter &painter)
{
    const double side = std::min(width(), height());
    const QRectF place((width() - side) / 2, (height() - side) / 2, side, side);
    drawing_.paint(painter, place, [this, place](QPainter &pen) {
        const int pixels = qRound(place.width() * PixelGrid::scale(pen));
        pen.drawImage(place, AppAssets::image(name_, pixels).image);
    });
}
