#pragma once

#include "DrawnItem.h"

#include <VelmoraMac/VelmoraThemePalette.h>

#include <QImage>
#include <qqmlintegration.h>

#include <array>

// The coloured ground of a panel: a gradient, two soft glows that drift over it, a shade, in a rounded rectangle.
//
// Ground and glows are computed once for a size and its colours; a step of the drift only composes them again,
// and only when a glow has moved by a whole pixel.
class Backdrop : public DrawnItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(
        VelmoraThemePalette themePalette READ themePalette WRITE setThemePalette NOTIFY themePaletteChanged)
    // The glows' position between their two end points, 0 to 1.
    Q_PROPERTY(double drift READ drift WRITE setDrift NOTIFY driftChanged)
    Q_PROPERTY(double cornerRadius READ cornerRadius WRITE setCornerRadius NOTIFY shapeChanged)
    // A translucent colour over the gradient and the glows.
    Q_PROPERTY(QColor scrim READ scrim WRITE setScrim NOTIFY shapeChanged)
    // The opacity of a vignette: a black shade in the corners, clear in the middle. `restingShade` is its part
    // that does not change.
    Q_PROPERTY(double restingShade READ restingShade WRITE setRestingShade NOTIFY shapeChanged)
    Q_PROPERTY(double shade READ shade WRITE setShade NOTIFY shapeChanged)
    // The distance of the shape from the item's sides, top and bottom.
    Q_PROPERTY(double sideInset READ sideInset WRITE setSideInset NOTIFY shapeChanged)
    Q_PROPERTY(double topInset READ topInset WRITE setTopInset NOTIFY shapeChanged)
    Q_PROPERTY(double bottomInset READ bottomInset WRITE setBottomInset NOTIFY shapeChanged)

public:
    explicit Backdrop(QQuickItem *parent = nullptr);

    [[nodiscard]] VelmoraThemePalette themePalette() const { return palette_; }

    [[nodiscard]] double drift() const { return drift_; }

    [[nodiscard]] double cornerRadius() const { return cornerRadius_; }

    [[nodiscard]] QColor scrim() const { return scrim_; }

    [[nodiscard]] double restingShade() const { return restingShade_; }

    [[nodiscard]] double shade() const { return shade_; }

    [[nodiscard]] double sideInset() const { return sideInset_; }

    [[nodiscard]] double topInset() const { return topInset_; }

    [[nodiscard]] double bottomInset() const { return bottomInset_; }

    void setThemePalette(const VelmoraThemePalette &palette);
    void setDrift(double drift);

    void setCornerRadius(double radius) { setShape(cornerRadius_, radius); }

    void setScrim(const QColor &scrim) { setGround(scrim_, scrim); }

    void setRestingShade(double shade) { setGround(restingShade_, shade); }

    void setShade(double shade) { setShape(shade_, shade); }

    void setSideInset(double inset) { setShape(sideInset_, inset); }

    void setTopInset(double inset) { setShape(topInset_, inset); }

    void setBottomInset(double inset) { setShape(bottomInset_, inset); }

    void draw(QPainter &painter) override;

Q_SIGNALS:
    void themePaletteChanged();
    void driftChanged();
    void shapeChanged();

private:
    template<typename Value>
    void setShape(Value &field, const Value &value)
    {
        if (field == value)
            return;
        field = value;
        update();
        Q_EMIT shapeChanged();
    }

    template<typename Value>
    void setGround(Value &field, const Value &value)
    {
        stale_ = stale_ || field != value;
        setShape(field, value);
    }

    void prepare(const QSize &pixels, double ratio);
    void compose(double ratio);
    void drawShape(QPainter &painter, const QRectF &shape, double ratio) const;
    // `place` counts pixels of the device, as does `origin`, the place of the canvas.
    void drawPixels(QPainter &painter, const QRect &place, const QPoint &origin, double radius);
    [[nodiscard]] QPoint glowPlace(std::size_t glow, double ratio) const;

    VelmoraThemePalette palette_;
    double drift_ = 0;
    double cornerRadius_ = 0;
    QColor scrim_ = Qt::transparent;
    double shade_ = 0;
    double restingShade_ = 0;
    double sideInset_ = 0, topInset_ = 0, bottomInset_ = 0;

    bool stale_ = true; // The pictures below belong to other colours.
    QImage vignette_;   // Of the size of the ground.
    QImage corners_;    // The shape's four corners, without what is between them.
    QImage ground_;     // The unchanging part: gradient, scrim, sheen and the resting shade.
    std::array<QImage, 2> glows_;
    QImage canvas_; // Ground, glows and the moving part of the shade, as last drawn.
    std::array<QPoint, 2> drawnAt_;
    double drawnShade_ = 0;
};
