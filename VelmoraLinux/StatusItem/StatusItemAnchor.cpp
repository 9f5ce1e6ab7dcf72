#include "StatusItemAnchor.h"

#include <algorithm>

namespace {
constexpr int largestIcon = 48;
constexpr int tipGap = 4;

// The thickness of the desktop's panels at each edge.
struct Struts {
    int left, top, right, bottom;
};

Struts strutsOf(const ScreenFrame &screen)
{
    return {screen.workArea.left() - screen.whole.left(), screen.workArea.top() - screen.whole.top(),
            screen.whole.right() - screen.workArea.right(), screen.whole.bottom() - screen.workArea.bottom()};
}
} // namespace

bool isClickPosition(QPoint hint, const std::optional<ScreenFrame> &screenOfHint)
{
    return screenOfHint && (hint.x() >= largestIcon || hint.y() >= largestIcon);
}

bool isPointerOnIcon(const std::optional<ScreenFrame> &screenOfPointer, const std::optional<QPoint> &pointer,
                     const std::optional<ScreenFrame> &screenOfHint, QPoint hint)
{
    if (!screenOfPointer || !pointer)
        return false;
    const bool isPointerInPanel = !screenOfPointer->workArea.contains(*pointer);
    const bool isHintInPanel = isClickPosition(hint, screenOfHint) && !screenOfHint->workArea.contains(hint);
    return isPointerInPanel || !isHintInPanel;
}

QRect anchorAround(QPoint click, const ScreenFrame &screen)
{
    const auto [left, top, right, bottom] = strutsOf(screen);
    if (click.y() < screen.workArea.top())
        return {click.x(), screen.whole.top(), 1, top};
    if (click.y() > screen.workArea.bottom())
        return {click.x(), screen.workArea.bottom() + 1, 1, bottom};
    if (click.x() < screen.workArea.left())
        return {screen.whole.left(), click.y(), left, 1};
    if (click.x() > screen.workArea.right())
        return {screen.workArea.right() + 1, click.y(), right, 1};
    return {click, QSize(1, 1)};
}

QRect fallbackAnchor(const ScreenFrame &screen)
{
    const auto [left, top, right, bottom] = strutsOf(screen);
    const int thickest = std::max({left, top, right, bottom});
    const QRect &whole = screen.whole;
    if (thickest == top)
        return anchorAround(whole.topRight(), screen);
    if (thickest == left)
        return anchorAround(whole.bottomLeft(), screen);
    return anchorAround(whole.bottomRight(), screen);
}

QRect tipFrame(const QRect &icon, const QRect &workArea, QSize size)
{
    const QRect inside = workArea.adjusted(tipGap, tipGap, -tipGap, -tipGap);
    QRect frame(QPoint(), size);
    frame.moveCenter(icon.center());
    const bool isBesideArea = icon.right() < workArea.left() || icon.left() > workArea.right();
    if (!isBesideArea && icon.center().y() < workArea.center().y())
        frame.moveTop(icon.bottom() + tipGap);
    else if (!isBesideArea)
        frame.moveBottom(icon.top() - tipGap);
    frame.moveLeft(std::max(std::min(frame.left(), inside.right() - size.width() + 1), inside.left()));
    frame.moveTop(std::max(std::min(frame.top(), inside.bottom() - size.height() + 1), inside.top()));
    return frame;
}
