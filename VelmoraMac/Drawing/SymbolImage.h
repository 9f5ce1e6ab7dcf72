#pragma once

#include "DrawnItem.h"
#include "KeptDrawing.h"

#include <QColor>
#include <QString>
#include <QSvgRenderer>
#include <qqmlintegration.h>

#include <memory>

// One of the application's symbols in one colour, as large as the text it stands beside.
class SymbolImage : public DrawnItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString symbolName READ symbolName WRITE setSymbolName NOTIFY symbolNameChanged)
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged)
    // The size of the text, in points; the symbol is a fifth larger.
    Q_PROPERTY(double pointSize READ pointSize WRITE setPointSize NOTIFY pointSizeChanged)

public:
    explicit SymbolImage(QQuickItem *parent = nullptr);

    [[nodiscard]] QString symbolName() const { return symbolName_; }

    [[nodiscard]] QColor color() const { return color_; }

    [[nodiscard]] double pointSize() const { return pointSize_; }

    void setSymbolName(const QString &name);
    void setColor(const QColor &color);
    void setPointSize(double size);
    void draw(QPainter &painter) override;

Q_SIGNALS:
    void symbolNameChanged();
    void colorChanged();
    void pointSizeChanged();

private:
    QString symbolName_;
    QColor color_ = Qt::black;
    double pointSize_ = 0;
    std::unique_ptr<QSvgRenderer> outline_; // Null while nothing has been drawn, or for an unknown name.
    KeptDrawing drawing_;
};
