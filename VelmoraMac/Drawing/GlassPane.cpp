#include "GlassPane.h"

#include "PixelGrid.h"
#include "SoftPictures.h"

#include <VelmoraMac/StyleKit/Contrast.h>

#include <QPainter>
#include <QPainterPath>

GlassPane::GlassPane(QQuickItem *parent)
    : DrawnItem(parent)
{
    connect(this, &GlassPane::changed, this, [this] {
        drawing_.forget();
        update();
    });
}

void GlassPane::draw(QPainter &painter)
{
    drawing_.paint(painter, boundingRect(), [this](QPainter &pen) { drawPane(pen); });
}

void GlassPane::drawPane(QPainter &painter) const
{
    const double scale = PixelGrid::scale(painter);
    QList<QColor> colors;
    for (const QColor &tint : std::as_const(tints_))
        colors.append(Contrast::over(tint, material_));
    const QSize pixels(qCeil(width() * scale), qCeil(height() * scale));
    QBrush brush(SoftPictures::gradient(pixels, colors, 0, SoftPictures::Direction::diagonal));
    brush.setTransform(QTransform::fromScale(1 / scale, 1 / scale));
    painter.setPen(Qt::NoPen);
    painter.setBrush(brush);
    painter.drawRoundedRect(boundingRect(), cornerRadius_, cornerRadius_);

    const double line = PixelGrid::lineWidth(painter, 1);
    QPainterPath ring;
    ring.addRoundedRect(boundingRect(), cornerRadius_, cornerRadius_);
    ring.addRoundedRect(boundingRect().adjusted(line, line, -line, -line), cornerRadius_ - line,
                        cornerRadius_ - line);
    painter.fillPath(ring, outline_);
}
