#pragma once

#include "DrawnItem.h"

#include <QColor>
#include <QImage>
#include <qqmlintegration.h>

// A box with round corners and an outline inside its edges, aligned to the pixels of the screen.
class RoundedBox : public DrawnItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(double radius MEMBER radius_ NOTIFY changed)
    Q_PROPERTY(QColor color MEMBER color_ NOTIFY changed)
    // The right end of a gradient that begins with `color`; none while it is not set.
    Q_PROPERTY(QColor endColor MEMBER endColor_ NOTIFY changed)
    // Over the fill. Nothing is drawn while it is transparent.
    Q_PROPERTY(QColor borderColor MEMBER borderColor_ NOTIFY changed)
    Q_PROPERTY(double borderWidth MEMBER borderWidth_ NOTIFY changed)
    // Off for a box that moves: its edges may then lie within a pixel.
    Q_PROPERTY(bool aligned MEMBER aligned_ NOTIFY changed)

public:
    explicit RoundedBox(QQuickItem *parent = nullptr);
    void draw(QPainter &painter) override;

Q_SIGNALS:
    void changed();

private:
    // `line` is the width of the outline, in the units of `box`.
    void drawShape(QPainter &painter, const QRectF &box, double radius, double line) const;
    // A box of one colour between pixels: most of it are rectangles, which are filled faster than shapes.
    void drawPixels(QPainter &painter, const QRect &box, double radius, int line);

    double radius_ = 0;
    QColor color_ = Qt::white;
    QColor endColor_;
    QColor borderColor_ = Qt::transparent;
    double borderWidth_ = 1;
    bool aligned_ = true;
    QImage corners_; // All four, without what is between them.
    double cornersRadius_ = 0;
};
