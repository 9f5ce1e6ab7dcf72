import QtQuick

// Scrolls a view by keys that nothing in it wants: arrows, Page Up and Down, Home, End and Space. It also keeps what
// has the keyboard within sight.
Item {
    id: root

    required property Flickable view
    readonly property Item focused: Window.activeFocusItem

    function scrollTo(place: real) {
        const start = view.originY - view.topMargin;
        const end = Math.max(start, view.originY + view.contentHeight + view.bottomMargin - view.height);
        view.contentY = Math.max(start, Math.min(end, place));
    }

    function press(event: var) {
        const page = event.key === Qt.Key_Space && event.modifiers & Qt.ShiftModifier ? -1 : 1;
        const steps = {};
        steps[Qt.Key_Up] = -40;
        steps[Qt.Key_Down] = 40;
        steps[Qt.Key_PageUp] = -0.9 * view.height;
        steps[Qt.Key_PageDown] = 0.9 * view.height;
        steps[Qt.Key_Space] = page * 0.9 * view.height;
        steps[Qt.Key_Home] = -Infinity;
        steps[Qt.Key_End] = Infinity;
        const step = steps[event.key];
        event.accepted = step !== undefined;
        if (step === Infinity && view instanceof ListView)
            (view as ListView).positionViewAtEnd(); // Its height is an estimate.
        else if (event.accepted)
            scrollTo(view.contentY + step);
    }

    visible: false
    onFocusedChanged: {
        for (let item = focused; item; item = item.parent) {
            if (item !== view.contentItem)
                continue;
            const top = focused.mapToItem(view.contentItem, 0, 0).y;
            if (top - 12 < view.contentY)
                scrollTo(top - 12);
            else if (top + focused.height + 12 > view.contentY + view.height)
                scrollTo(top + focused.height + 12 - view.height);
        }
    }
}
