import QtQuick
import VelmoraMac

// Shows the keyboard focus: a ring around its parent.
Rectangle {
    required property bool shown

    anchors.fill: parent
    anchors.margins: -3
    visible: shown
    color: "transparent"
    border.width: 2
    border.color: Surroundings.colors.blue
}
