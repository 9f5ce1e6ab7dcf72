#pragma once

#include "DrawnItem.h"
#include "KeptDrawing.h"

#include <QColor>
#include <QList>
#include <qqmlintegration.h>

// A rounded pane of an opaque material under a gradient of translucent tints, from the top left to the bottom
// right, with an outline one point wide.
class GlassPane : public DrawnItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QColor material MEMBER material_ NOTIFY changed)
    Q_PROPERTY(QList<QColor> tints MEMBER tints_ NOTIFY changed)
    Q_PROPERTY(QColor outline MEMBER outline_ NOTIFY changed)
    Q_PROPERTY(double cornerRadius MEMBER cornerRadius_ NOTIFY changed)

public:
    explicit GlassPane(QQuickItem *parent = nullptr);
    void draw(QPainter &painter) override;

Q_SIGNALS:
    void changed();

private:
    void drawPane(QPainter &painter) const;

    QColor material_ = Qt::white;
    QList<QColor> tints_;
    QColor outline_ = Qt::transparent;
    double cornerRadius_ = 0;
    KeptDrawing drawing_;
};
