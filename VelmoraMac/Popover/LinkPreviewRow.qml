import QtQuick
import VelmoraMac

// One link on one line under its caption.
RoundedBox {
    id: root

    required property string caption
    required property string linkText
    required property string otherText // The same link after its cleaning, or before it.
    required property color tint
    property color removedTint: "transparent" // Of what the cleaning has removed.

    implicitHeight: column.implicitHeight + 16
    radius: 11
    color: Surroundings.palette.linkRowFill

    Column {
        id: column

        anchors {
            left: parent.left
            right: parent.right
            top: parent.top
            margins: 8
        }
        spacing: 4

        SystemText {
            text: root.caption.toUpperCase()
            Accessible.name: root.caption
            pointSize: 8
            font.weight: Font.Bold
            font.letterSpacing: 0.4
            color: root.tint
        }
        LinkText {
            width: parent.width
            linkText: root.linkText
            otherText: root.otherText
            removedTint: root.removedTint
            pointSize: 9
            font.weight: Font.DemiBold
            color: Surroundings.palette.primaryText
        }
    }
}
