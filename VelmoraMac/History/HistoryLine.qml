import QtQuick
import VelmoraMac

// A link of the history on one line, under its title.
RoundedBox {
    id: root

    required property string title
    required property string value
    property string otherValue // The same link after its cleaning, or before it.
    property color removedTint: "transparent" // Of what the cleaning has removed.

    implicitHeight: column.implicitHeight + 20
    radius: 12
    color: Surroundings.palette.linkRowFill

    Column {
        id: column

        anchors {
            left: parent.left
            right: parent.right
            top: parent.top
            margins: 10
        }
        spacing: 2

        SystemText {
            text: root.title
            pointSize: 10
            font.weight: Font.Bold
            color: Surroundings.colors.secondaryLabel
        }
        LinkText {
            width: parent.width
            linkText: root.value
            otherText: root.otherValue
            removedTint: root.removedTint
            pointSize: 11
            color: Surroundings.colors.label
        }
    }
}
