#include "SymbolImage.h"

#include <VelmoraMac/StyleKit/AppAssets.h>

#include <QPainter>

#include <algorithm>
#include <cmath>

SymbolImage::SymbolImage(QQuickItem *parent)
    : QQuickPaintedItem(parent)
{
    setPointSize(13);
}

void SymbolImage::setSymbolName(const QString &name)
{
    if (name == symbolName_)
        return;
    symbolName_ = name;
    update();
    Q_EMIT symbolNameChanged();
}

void SymbolImage::setColor(const QColor &color)
{
    if (color == color_)
        return;
    color_ = color;
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

void SymbolImage::paint(QPainter *painter)
{
    const double ratio = painter->device()->devicePixelRatioF();
    const double side = std::min(width(), height());
    QImage symbol = AppAssets::symbol(symbolName_, qRound(side * ratio));
    if (symbol.isNull())
        return;
    QPainter tint(&symbol);
    tint.setCompositionMode(QPainter::CompositionMode_SourceIn);
    tint.fillRect(symbol.rect(), color_);
    tint.end();
    painter->drawImage(QRectF((width() - side) / 2, (height() - side) / 2, side, side), symbol);
}
