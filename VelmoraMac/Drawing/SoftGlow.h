#pragma once

#include "DrawnItem.h"

#include <QColor>
#include <QImage>
#include <qqmlintegration.h>

// A round glow that fills the item: full colour in the middle, transparent at the edge.
class SoftGlow : public DrawnItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged)

public:
    explicit SoftGlow(QQuickItem *parent = nullptr);

    [[nodiscard]] QColor color() const { return color_; }

    void setColor(const QColor &color);
    void draw(QPainter &painter) override;

Q_SIGNALS:
    void colorChanged();

private:
    QColor color_ = Qt::white;
    QImage picture_; // In the pixels of the window, without the item's own scale: it has no edges to blur.
};
