#include "KeptDrawing.h"

#include "PixelGrid.h"

#include <QPainter>

void KeptDrawing::paint(QPainter &painter, const QRectF &rect, const Draw &draw)
{
    const QTransform toDevice = painter.deviceTransform();
    const QRect place = toDevice.mapRect(PixelGrid::aligned(painter, rect)).toAlignedRect();
    if (place.isEmpty() || rect.isEmpty())
        return;
    QTransform toPicture;
    if (PixelGrid::isUpright(painter))
        toPicture.scale(place.width() / rect.width(), place.height() / rect.height())
            .translate(-rect.left(), -rect.top());
    else
        toPicture = toDevice * QTransform::fromTranslate(-place.left(), -place.top());
    if (picture_.size() != place.size() || toPicture != drawnWith_) {
        drawnWith_ = toPicture;
        picture_ = QImage(place.size(), QImage::Format_ARGB32_Premultiplied);
        picture_.fill(Qt::transparent);
        QPainter pen(&picture_);
        pen.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
        pen.setTransform(toPicture);
        draw(pen);
    }
    PixelGrid::drawPixels(painter, place.topLeft(), picture_);
}
