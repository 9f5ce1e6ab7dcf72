#include "SymbolImage.h"

#include <VelmoraMac/StyleKit/AppAssets.h>

#include <QPainter>

#include <algorithm>
#include <cmath>

SymbolImage::SymbolImage(QQuickItem *parent)
    : DrawnItem(parent)
{
    setPointSize(13);
}

void SymbolImage::setSymbolName(const QString &name)
{
    if (name == symbolName_)
        return;
    symbolName_ = name;
    outline_.reset();
    drawing_.forget();
    update();
    Q_EMIT symbolNameChanged();
}

void SymbolImage::setColor(const QColor &color)
{
    if (color == color_)
        return;
    color_ = color;
    drawing_.forget();
    update();
    Q_EMIT colorChanged();
}

void SymbolImage::setPointSize(double size)
{
    if (size == pointSize_)
        return;
    pointSize_ = size;
    const double side = std::ceil(size * 1.2);
    setImplicitSize(side, side);
    update();
    Q_EMIT pointSizeChanged();
}

void SymbolImage::draw(QPainter &painter)
{
    if (!outline_)
        outline_ = AppAssets::symbolOutline(symbolName_);
    if (!outline_)
        return;
    const double side = std::min(width(), height());
    const QRectF place((width() - side) / 2, (height() - side) / 2, side, side);
    drawing_.paint(painter, place, [this, place](QPainter &pen) {
        outline_->render(&pen, place);
        pen.resetTransform();
        pen.setCompositionMode(QPainter::CompositionMode_SourceIn);
        pen.fillRect(QRect(QPoint(), QSize(pen.device()->width(), pen.device()->height())), color_);
    });
}
