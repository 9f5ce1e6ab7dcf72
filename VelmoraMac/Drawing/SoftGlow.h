#pragma once

#include <QColor>
#include <QQuickPaintedItem>
#include <qqmlintegration.h>

// A soft round glow that fills the item: full colour in the middle, nothing at the rim.
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
