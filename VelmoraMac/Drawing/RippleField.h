#pragma once

#include "DrawnItem.h"
#include "KeptDrawing.h"

#include <QColor>
#include <QPointF>
#include <qqmlintegration.h>

// Concentric rings that fade outwards, over a soft light at their centre and the application's mark at the far
// side, within a rounded rectangle.
class RippleField : public DrawnItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QPointF centre MEMBER centre_ NOTIFY changed)
    Q_PROPERTY(double cornerRadius MEMBER cornerRadius_ NOTIFY changed)
    Q_PROPERTY(QColor color MEMBER color_ NOTIFY changed)
    Q_PROPERTY(QColor tint MEMBER tint_ NOTIFY changed)

public:
    explicit RippleField(QQuickItem *parent = nullptr);
    void draw(QPainter &painter) override;

Q_SIGNALS:
    void changed();

private:
    void drawField(QPainter &painter) const;
    void drawMark(QPainter &painter) const;

    QPointF centre_;
    double cornerRadius_ = 0;
    QColor color_ = Qt::white;
    QColor tint_ = Qt::white;
    KeptDrawing drawing_;
};
