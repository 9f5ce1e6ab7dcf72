#include "PopoverPlacement.h"

#include <algorithm>

namespace {
constexpr int margin = 8;

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
    // The icon lies inside the work area: choose the side with more room.
    return icon.y() <= workArea.center().y() ? Side::below : Side::above;
}

// `most` wins over `least`: what is too large is aligned to the far margin.
int between(int value, int least, int most)
{
    return std::min(std::max(value, least), most);
}
} // namespace

QRect popoverFrame(const QRect &anchor, const QRect &workArea, QSize size)
{
    QRect frame(QPoint(), size);
    frame.moveCenter(anchor.center());
    switch (sideOf(anchor, workArea)) {
    case Side::below:
        frame.moveTop(anchor.bottom() + 1 + margin);
        break;
    case Side::above:
        frame.moveBottom(anchor.top() - 1 - margin);
        break;
    case Side::rightOf:
        frame.moveLeft(anchor.right() + 1 + margin);
        break;
    case Side::leftOf:
        frame.moveRight(anchor.left() - 1 - margin);
        break;
    }
    const QRect inside = workArea.adjusted(margin, margin, -margin, -margin);
    frame.moveLeft(between(frame.left(), inside.left(), inside.right() + 1 - size.width()));
    // A panel that is too tall keeps its top on screen.
    frame.moveTop(std::max(std::min(frame.top(), inside.bottom() + 1 - size.height()), inside.top()));
    return frame;
}
