#include "GlassPane.h"

#include "SoftPictures.h"

#include <VelmoraMac/StyleKit/Contrast.h>

#include <QPainter>

GlassPane::GlassPane(QQuickItem *parent)
    : QQuickPaintedItem(parent)
{
    connect(this, &GlassPane::changed, this, [this] { update(); });
}

void GlassPane::paint(QPainter *painter)
{
    const double ratio = painter->device()->devicePixelRatioF();
    const QSize pixels(qCeil(width() * ratio), qCeil(height() * ratio));
    if (pixels.isEmpty())
        return;
    QList<QColor> colors;
    for (const QColor &tint : std::as_const(tints_))
        colors.append(Contrast::over(tint, material_));
    QBrush brush(SoftPictures::gradient(pixels, colors, 0, SoftPictures::Direction::diagonal));
    brush.setTransform(QTransform::fromScale(1 / ratio, 1 / ratio));
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setBrush(brush);
    painter->setPen(QPen(outline_, 1));
    painter->drawRoundedRect(boundingRect().adjusted(0.5, 0.5, -0.5, -0.5), cornerRadius_ - 0.5,
                             cornerRadius_ - 0.5);
}
