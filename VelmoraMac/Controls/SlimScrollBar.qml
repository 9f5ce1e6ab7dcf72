import QtQuick
import VelmoraMac
import QtQuick.Templates as T

// A scroll bar that is clearer while its view moves or the pointer is near.
T.ScrollBar {
    id: root

    implicitWidth: 10
    padding: 2
    visible: size < 1
    minimumSize: 0.08
    Accessible.ignored: true // Its view is scrolled by keys, and follows what has the keyboard.

    contentItem: RoundedBox {
        implicitWidth: 6
        radius: 3
        color: Surroundings.colors.secondaryLabel
        opacity: root.pressed || root.hovered ? 0.8 : (root.active ? 0.5 : 0.2)
    }
}
