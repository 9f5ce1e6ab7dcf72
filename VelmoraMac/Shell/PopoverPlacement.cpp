#include "PopoverPlacement.h"

#include <algorithm>

namespace {
constexpr int margin = 8;
constexpr int menuGap = 4;

enum class Side { below, above, rightOf, leftOf };

Side sideOf(const QRect &anchor, const QRect &workArea)
{
    const QPoint icon = anchor.center();
    if (icon.y() < workArea.top())
        return Side::below;
    if (icon.y() > workArea.bottom())
        return Side::above;
    if (icon.x() < workArea.left())
        return Side::rightOf;
    if (icon.x() > workArea.right())
        return Side::leftOf;
    // The icon is inside the work area: choose the side with more room.
    return icon.y() <= workArea.center().y() ? Side::below : Side::above;
}

// Moves `frame` to the side of `anchor` that faces the work area, `gap` points apart.
void moveBeside(QRect &frame, const QRect &anchor, const QRect &workArea, int gap)
{
    switch (sideOf(anchor, workArea)) {
    case Side::below:
        frame.moveTop(anchor.bottom() + 1 + gap);
        break;
    case Side::above:
        frame.moveBottom(anchor.top() - 1 - gap);
        break;
    case Side::rightOf:
        frame.moveLeft(anchor.right() + 1 + gap);
        break;
    case Side::leftOf:
        frame.moveRight(anchor.left() - 1 - gap);
        break;
    }
}

// `most` wins over `least`: what is too large is aligned to the far margin.
int between(int value, int least, int most)
{
    return std::min(std::max(value, least), most);
}

// A panel that is too tall keeps its top on screen.
void keepInside(QRect &frame, const QRect &inside)
{
    frame.moveLeft(between(frame.left(), inside.left(), inside.right() + 1 - frame.width()));
    frame.moveTop(std::max(std::min(frame.top(), inside.bottom() + 1 - frame.height()), inside.top()));
}
} // namespace

QRect popoverFrame(const QRect &anchor, const QRect &workArea, QSize size)
{
    QRect frame(QPoint(), size);
    frame.moveCenter(anchor.center());
    moveBeside(frame, anchor, workArea, margin);
    keepInside(frame, workArea.adjusted(margin, margin, -margin, -margin));
    return frame;
}

QRect menuFrame(const QRect &anchor, const QRect &workArea, QSize size)
{
    QRect frame(anchor.topLeft(), size);
    moveBeside(frame, anchor, workArea, menuGap);
    keepInside(frame, workArea);
    return frame;
}
