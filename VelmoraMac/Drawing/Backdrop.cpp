#include "Backdrop.h"

#include "PixelGrid.h"
#include "SoftPictures.h"

#include <VelmoraMac/StyleKit/PanelGround.h>

#include <QPainter>
#include <QQuickWindow>
#include <QRadialGradient>

#include <cmath>

namespace {

struct Glow {
    QPointF start; // Of its way, in points from the middle of the item.
    QPointF end;
    double radius = 0;
};

constexpr std::array glows = {Glow{{148, 112}, {-212, -182}, 230}, Glow{{-172, -120}, {174, 136}, 210}};
constexpr double sheen = 0.15; // The opacity of the white light along the top edge.

void castShade(QPainter &painter, const QSize &size, double opacity)
{
    if (opacity < 0.002)
        return;
    QRadialGradient shade(QPointF(size.width() / 2.0, size.height() / 2.0),
                          std::hypot(size.width(), size.height()) / 2);
    shade.setColorAt(0.35, Qt::transparent);
    shade.setColorAt(1, QColor::fromRgbF(0, 0, 0, static_cast<float>(opacity)));
    painter.fillRect(QRect(QPoint(), size), shade);
}

} // namespace

Backdrop::Backdrop(QQuickItem *parent)
    : DrawnItem(parent)
{
}

void Backdrop::setThemePalette(const VelmoraThemePalette &palette)
{
    if (palette == palette_)
        return;
    palette_ = palette;
    stale_ = true;
    update();
    Q_EMIT themePaletteChanged();
}

void Backdrop::setDrift(double drift)
{
    if (drift == drift_)
        return;
    drift_ = drift;
    const double ratio = window() != nullptr ? window()->effectiveDevicePixelRatio() : 1;
    if (glowPlace(0, ratio) != drawnAt_[0] || glowPlace(1, ratio) != drawnAt_[1])
        update();
    Q_EMIT driftChanged();
}

QPoint Backdrop::glowPlace(std::size_t glow, double ratio) const
{
    const auto &[start, end, radius] = glows[glow];
    const QPointF offset = start + (end - start) * drift_;
    const QPointF middle(width() / 2, height() / 2);
    return ((middle + offset - QPointF(radius, radius)) * ratio).toPoint();
}

void Backdrop::prepare(const QSize &pixels, double ratio)
{
    if (!stale_ && ground_.size() == pixels)
        return;
    const bool recoloured = stale_;
    stale_ = false;
    canvas_ = {};
    QList<QColor> colors = palette_.backgroundColors;
    for (QColor &color : colors)
        color = PanelGround::colorAt(color, scrim_);
    ground_ = SoftPictures::gradient(pixels, colors, sheen);
    QPainter painter(&ground_);
    castShade(painter, ground_.size(), restingShade_);
    if (!recoloured)
        return;
    for (std::size_t glow = 0; glow < glows.size(); ++glow) {
        const QColor color = glow == 0 ? palette_.glowPrimary : palette_.glowSecondary;
        QColor seen = PanelGround::colorAt(color, scrim_);
        seen.setAlphaF(color.alphaF());
        glows_[glow] = SoftPictures::glow(qRound(2 * glows[glow].radius * ratio), seen);
    }
}

void Backdrop::compose(double ratio)
{
    const std::array<QPoint, 2> places{glowPlace(0, ratio), glowPlace(1, ratio)};
    if (!canvas_.isNull() && places == drawnAt_ && shade_ == drawnShade_)
        return;
    drawnAt_ = places;
    drawnShade_ = shade_;
    canvas_ = ground_.copy();
    QPainter painter(&canvas_);
    for (std::size_t glow = 0; glow < glows.size(); ++glow)
        painter.drawImage(drawnAt_[glow], glows_[glow]);
    castShade(painter, canvas_.size(), shade_ - restingShade_);
}

void Backdrop::draw(QPainter &painter)
{
    const double ratio = window()->effectiveDevicePixelRatio();
    const QSize pixels(qCeil(width() * ratio), qCeil(height() * ratio));
    prepare(pixels, ratio);
    compose(ratio);

    const QRectF shape = boundingRect().adjusted(sideInset_, topInset_, -sideInset_, -bottomInset_);
    const bool fills = shape == boundingRect() && PixelGrid::isUpright(painter);
    if (!fills) {
        drawShape(painter, shape, ratio);
        return;
    }
    // At rest only the bands with the corners are a shape; what is between them is copied.
    const QRectF whole = PixelGrid::aligned(painter, shape);
    const QRectF middle =
        PixelGrid::aligned(painter, whole.adjusted(0, cornerRadius_ + 1, 0, -cornerRadius_ - 1));
    for (const QRectF &band :
         {QRectF(whole.topLeft(), middle.topRight()), QRectF(middle.bottomLeft(), whole.bottomRight())}) {
        painter.save();
        painter.setClipRect(band, Qt::IntersectClip);
        drawShape(painter, whole, ratio);
        painter.restore();
    }
    const QRect place = painter.deviceTransform().mapRect(middle).toRect();
    const QPoint origin = painter.deviceTransform().map(QPointF()).toPoint();
    painter.save();
    PixelGrid::countPixels(painter);
    painter.drawImage(place.topLeft(), canvas_, place.translated(-origin));
    painter.restore();
}

void Backdrop::drawShape(QPainter &painter, const QRectF &shape, double ratio) const
{
    QBrush cover(canvas_);
    cover.setTransform(QTransform::fromScale(1 / ratio, 1 / ratio));
    painter.setPen(Qt::NoPen);
    painter.setBrush(cover);
    painter.drawRoundedRect(shape, cornerRadius_, cornerRadius_);
}
