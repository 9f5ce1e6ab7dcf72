#pragma once

#include <QQuickItem>

class QPainter;

// An item that draws itself straight into its window, pixel by pixel: at every scale as sharp as the screen.
//
// Needs the software scene graph, which draws on the main thread. Nothing is kept between two frames, and an item
// is drawn again whenever something below or above it changes; what takes long to draw is kept by the item itself
// (KeptDrawing).
class DrawnItem : public QQuickItem {
    Q_OBJECT

public:
    explicit DrawnItem(QQuickItem *parent = nullptr);

    // Draws the item in its points. `painter` antialiases and has the item's place, turn and opacity; its state is
    // restored afterwards.
    virtual void draw(QPainter &painter) = 0;

protected:
    QSGNode *updatePaintNode(QSGNode *old, UpdatePaintNodeData *data) override;
};
