#include "RippleField.h"

#include "PixelGrid.h"

#include <VelmoraMac/StyleKit/AppAssets.h>

#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>
#include <QtMath>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr double firstRing = 44; // Points: the rings inside it belong to the seal.
constexpr double ringGap = 19;
constexpr double ringOpacity = 0.11;
constexpr double lightOpacity = 0.16;
constexpr double markOpacity = 0.045;

QColor at(QColor color, double opacity)
{
    color.setAlphaF(static_cast<float>(opacity));
    return color;
}

} // namespace

RippleField::RippleField(QQuickItem *parent)
    : DrawnItem(parent)
{
    connect(this, &RippleField::changed, this, [this] {
        drawing_.forget();
        update();
    });
}

void RippleField::draw(QPainter &painter)
{
    drawing_.paint(painter, boundingRect(), [this](QPainter &pen) { drawField(pen); });
}

void RippleField::drawField(QPainter &painter) const
{
    const double reach = width() * 0.82;
    QPainterPath shape;
    shape.addRoundedRect(boundingRect().adjusted(1, 1, -1, -1), cornerRadius_ - 1, cornerRadius_ - 1);

    QRadialGradient light(centre_, reach * 0.7);
    light.setColorAt(0, at(tint_, lightOpacity));
    light.setColorAt(0.5, at(tint_, lightOpacity * 0.28));
    light.setColorAt(1, at(tint_, 0));
    painter.fillPath(shape, light);

    painter.setClipPath(shape);
    drawMark(painter);
    painter.setBrush(Qt::NoBrush);
    const int rings = qCeil((reach - firstRing) / ringGap);
    for (int ring = 0; ring < rings; ++ring) {
        const double radius = firstRing + ring * ringGap;
        const double left = 1 - radius / reach;
        painter.setPen(QPen(at(color_, ringOpacity * left * left * 1.6), 1));
        painter.drawEllipse(centre_, radius, radius);
    }
}

void RippleField::drawMark(QPainter &painter) const
{
    const double side = std::max(150.0, height() * 1.02);
    QImage mark = AppAssets::symbol(u"velmora"_s, qRound(side * PixelGrid::scale(painter)));
    QPainter tint(&mark);
    tint.setCompositionMode(QPainter::CompositionMode_SourceIn);
    tint.fillRect(mark.rect(), at(color_, markOpacity));
    tint.end();
    painter.drawImage(QRectF(width() - side * 0.74, (height() - side) / 2 + 6, side, side), mark);
}
