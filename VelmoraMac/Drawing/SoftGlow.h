#pragma once

#include <QColor>
#include <QQuickPaintedItem>
#include <qqmlintegration.h>

// A round glow that fills the item: full colour in the middle, transparent at the edge.
class SoftGlow : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged)

public:
    explicit SoftGlow(QQuickItem *parent = nullptr);

    [[nodiscard]] QColor color() const { return color_; }

    void setColor(const QColor &color);
    void paint(QPainter *painter) override;

Q_SIGNALS:
    void colorChanged();

private:
    QColor color_ = Qt::white;
};
