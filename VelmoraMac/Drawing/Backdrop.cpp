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

// A vignette of black at full opacity.
QImage vignette(const QSize &size)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QRadialGradient shade(QPointF(size.width() / 2.0, size.height() / 2.0),
                          std::hypot(size.width(), size.height()) / 2);
    shade.setColorAt(0.35, Qt::transparent);
    shade.setColorAt(1, Qt::black);
    QPainter(&image).fillRect(image.rect(), shade);
    return image;
}

void castShade(QPainter &painter, const QImage &vignette, double opacity)
{
    if (opacity < 0.002)
        return;
    painter.setOpacity(opacity);
    painter.drawImage(QPoint(), vignette);
    painter.setOpacity(1);
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
    if (vignette_.size() != pixels)
        vignette_ = vignette(pixels);
    QList<QColor> colors = palette_.backgroundColors;
    for (QColor &color : colors)
        color = PanelGround::colorAt(color, scrim_);
    ground_ = SoftPictures::gradient(pixels, colors, sheen);
    QPainter painter(&ground_);
    castShade(painter, vignette_, restingShade_);
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
    if (canvas_.size() != ground_.size())
        canvas_ = QImage(ground_.size(), ground_.format());
    QPainter painter(&canvas_);
    painter.drawImage(QPoint(), ground_);
    for (std::size_t glow = 0; glow < glows.size(); ++glow)
        painter.drawImage(drawnAt_[glow], glows_[glow]);
    castShade(painter, vignette_, shade_ - restingShade_);
}

void Backdrop::draw(QPainter &painter)
{
    const double ratio = window()->effectiveDevicePixelRatio();
    const QSize pixels(qCeil(width() * ratio), qCeil(height() * ratio));
    prepare(pixels, ratio);
    compose(ratio);

    const QRectF shape = boundingRect().adjusted(sideInset_, topInset_, -sideInset_, -bottomInset_);
    if (!PixelGrid::isUpright(painter)) {
        drawShape(painter, shape, ratio);
        return;
    }
    const QRect place = painter.deviceTransform().mapRect(PixelGrid::aligned(painter, shape)).toAlignedRect();
    const QPoint origin = painter.deviceTransform().map(QPointF()).toPoint();
    painter.save();
    PixelGrid::countPixels(painter);
    drawPixels(painter, place, origin, cornerRadius_ * ratio);
    painter.restore();
}

// Only the corners are a shape; the rest is copied.
void Backdrop::drawPixels(QPainter &painter, const QRect &place, const QPoint &origin, double radius)
{
    const int side = qCeil(radius);
    if (corners_.width() != 2 * side) {
        corners_ = QImage(2 * side, 2 * side, QImage::Format_ARGB32_Premultiplied);
        corners_.fill(Qt::transparent);
        QPainter pen(&corners_);
        pen.setRenderHint(QPainter::Antialiasing);
        pen.setPen(Qt::NoPen);
        pen.setBrush(Qt::black);
        pen.drawRoundedRect(corners_.rect(), radius, radius);
    }
    const auto copy = [&](const QRect &part) {
        painter.drawImage(part.topLeft(), canvas_, part.translated(-origin));
    };
    copy(place.adjusted(side, 0, -side, side - place.height()));
    copy(place.adjusted(0, side, 0, -side));
    copy(place.adjusted(side, place.height() - side, -side, 0));
    QImage piece(side, side, corners_.format());
    for (const int right : {0, 1})
        for (const int below : {0, 1}) {
            const QPoint corner(right != 0 ? place.right() + 1 - side : place.left(),
                                below != 0 ? place.bottom() + 1 - side : place.top());
            QPainter pen(&piece);
            pen.setCompositionMode(QPainter::CompositionMode_Source);
            pen.drawImage(QPoint(), corners_, QRect(right * side, below * side, side, side));
            pen.setCompositionMode(QPainter::CompositionMode_SourceIn);
            pen.drawImage(QPoint(), canvas_, QRect(corner - origin, piece.size()));
            pen.end();
            painter.drawImage(corner, piece);
        }
}

void Backdrop::drawShape(QPainter &painter, const QRectF &shape, double ratio) const
{
    QBrush cover(canvas_);
    cover.setTransform(QTransform::fromScale(1 / ratio, 1 / ratio));
    painter.setPen(Qt::NoPen);
    painter.setBrush(cover);
    painter.drawRoundedRect(shape, cornerRadius_, cornerRadius_);
}
