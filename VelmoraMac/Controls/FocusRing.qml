import QtQuick
import VelmoraMac

// Shows the keyboard focus: a ring around its parent.
RoundedBox {
    required property bool shown

    anchors.fill: parent
    anchors.margins: -3
    visible: shown
    color: "transparent"
    borderWidth: 2
    borderColor: Surroundings.colors.focus
}
