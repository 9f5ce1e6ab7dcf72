#pragma once

#include <QImage>
#include <QRectF>
#include <QTransform>

#include <functional>

class QPainter;

// A drawing that is kept as pixels for as long as it is drawn in the same size and turn.
class KeptDrawing {
public:
    using Draw = std::function<void(QPainter &)>;

    // The next paint() draws again.
    void forget() { picture_ = {}; }

    // Shows what `draw` draws within `rect`, both in the points of `painter`. The edges of `rect` are aligned to
    // pixels; a turned drawing is drawn turned, not its pixels.
    void paint(QPainter &painter, const QRectF &rect, const Draw &draw);

private:
    QTransform drawnWith_; // From points to the pixels of the picture.
    QImage picture_;
};
